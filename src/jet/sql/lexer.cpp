#include "jet/sql/lexer.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "foundation/number_text.h"
#include "jet/errors.h"
#include "jet/sql/reserved_words.h"
#include "jet/values/date_literal.h"

namespace jet::sql {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

bool IsNamePart(char c) {
  return IsNameStart(c) || IsDigit(c) || c == '$';
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) {}

  std::vector<Token> Run() {
    for (;;) {
      while (position_ < text_.size() && IsBlank(text_[position_]))
        ++position_;
      Token token = Next();
      const bool is_last = token.kind == TokenKind::kEnd;
      tokens_.push_back(std::move(token));
      if (is_last) return std::move(tokens_);
    }
  }

 private:
  Token Next() {
    const std::size_t begin = position_;
    Token token;
    if (position_ < text_.size()) token = Scan(text_[position_]);
    token.begin = begin;
    token.end = position_;
    return token;
  }

  Token Scan(char c) {
    if (IsNameStart(c)) return Name();
    if (c == '[') return Bracketed();
    if (c == '"' || c == '\'') return Quoted(c);
    if (c == '0' && (At(position_ + 1) == 'x' || At(position_ + 1) == 'X')) return Bytes();
    if (IsDigit(c) || (c == '.' && IsDigit(At(position_ + 1)))) return Number();
    if (c == '#') return Date();
    if (c == '&' && IsHexadecimal()) return Hexadecimal();
    return Symbol();
  }

  char At(std::size_t position) const { return position < text_.size() ? text_[position] : '\0'; }

  Token Name() {
    const std::size_t begin = position_;
    while (IsNamePart(At(position_)))
      ++position_;
    return {TokenKind::kName, std::string(text_.substr(begin, position_ - begin))};
  }

  Token Bracketed() {
    const std::size_t end = text_.find(']', position_);
    const std::string name(text_.substr(position_ + 1, end - position_ - 1));
    if (end == std::string_view::npos || name.empty() || name.find('[') != std::string::npos)
      Fail(kInvalidBracketing, name);
    position_ = end + 1;
    return {TokenKind::kBracketedName, name};
  }

  // A doubled quote is an escaped one.
  Token Quoted(char quote) {
    const std::size_t begin = position_++;
    std::string value;
    for (;;) {
      const std::size_t end = text_.find(quote, position_);
      if (end == std::string_view::npos)
        Fail(kSyntaxInExpression, "кавычка не закрыта", Excerpt(text_.substr(begin)));
      value += text_.substr(position_, end - position_);
      position_ = end + 1;
      if (At(position_) != quote) return {TokenKind::kText, value};
      value += quote;
      ++position_;
    }
  }

  Token Number() {
    std::size_t length = 0;
    const std::string_view rest = text_.substr(position_);
    const double value = tmw::ReadNumberPrefix(rest, &length);
    const std::string_view digits = rest.substr(0, length);
    position_ += length;
    if (IsNameStart(At(position_)) || !std::isfinite(value))
      Fail(kSyntaxInExpression, "ошибка в числе", Excerpt(rest));
    const bool is_whole = digits.find_first_of(".eE") == std::string_view::npos;
    return {is_whole && value <= std::numeric_limits<std::int32_t>::max() ? TokenKind::kInteger
                                                                          : TokenKind::kNumber,
            std::string(digits), value};
  }

  Token Bytes() {
    const std::size_t begin = position_ + 2;
    std::size_t end = begin;
    while (std::isxdigit(static_cast<unsigned char>(At(end))) != 0)
      ++end;
    if ((end - begin) % 2 != 0 || IsNamePart(At(end)))
      Fail(kSyntaxInExpression, "ошибка в байтах", Excerpt(text_.substr(position_)));
    std::string bytes;
    bytes.reserve((end - begin) / 2);
    for (std::size_t i = begin; i < end; i += 2) {
      std::uint8_t byte = 0;
      std::from_chars(text_.data() + i, text_.data() + i + 2, byte, 16);
      bytes.push_back(static_cast<char>(byte));
    }
    position_ = end;
    return {TokenKind::kBytes, std::move(bytes)};
  }

  Token Date() {
    const std::size_t end = text_.find('#', position_ + 1);
    if (end == std::string_view::npos)
      Fail(kSyntaxInExpression, "дата не закрыта", Excerpt(text_.substr(position_)));
    const std::string_view inner = text_.substr(position_ + 1, end - position_ - 1);
    const std::optional<double> days = ParseDateLiteral(inner);
    if (!days) Fail(kSyntaxInExpression, "ошибка в дате", Excerpt(inner));
    position_ = end + 1;
    return {TokenKind::kDate, std::string(inner), *days};
  }

  // "&H1F" is a number where an operand may begin; after an operand "&" joins texts.
  bool IsHexadecimal() const {
    if (At(position_ + 1) != 'H' && At(position_ + 1) != 'h') return false;
    if (!tokens_.empty()) {
      const Token& last = tokens_.back();
      const bool is_operand = last.kind == TokenKind::kSymbol ? last.text == ")" || last.text == "*"
                              : last.kind == TokenKind::kName ? !IsReservedWord(last.text)
                                                              : true;
      if (is_operand) return false;
    }
    std::size_t end = position_ + 2;
    while (std::isxdigit(static_cast<unsigned char>(At(end))) != 0)
      ++end;
    return end > position_ + 2 && end <= position_ + 10 && !IsNamePart(At(end));
  }

  Token Hexadecimal() {
    position_ += 2;
    std::uint32_t value = 0;
    const char* const first = text_.data() + position_;
    const auto result = std::from_chars(first, text_.data() + text_.size(), value, 16);
    position_ += static_cast<std::size_t>(result.ptr - first);
    return {TokenKind::kInteger, std::string(first, result.ptr),
            static_cast<double>(static_cast<std::int32_t>(value))};
  }

  Token Symbol() {
    for (const std::string_view two : {"<>", "<=", ">=", "=<", "=>", "><"}) {
      if (text_.substr(position_, 2) != two) continue;
      position_ += 2;
      if (two == "=<") return {TokenKind::kSymbol, "<="};
      if (two == "=>") return {TokenKind::kSymbol, ">="};
      if (two == "><") return {TokenKind::kSymbol, "<>"};
      return {TokenKind::kSymbol, std::string(two)};
    }
    const char c = text_[position_];
    constexpr std::string_view kSymbols = "+-*/\\^&=<>().,;!";
    if (kSymbols.find(c) == std::string_view::npos)
      Fail(kSyntaxInExpression, "недопустимый знак", text_.substr(position_, 1));
    ++position_;
    return {TokenKind::kSymbol, std::string(1, c)};
  }

  std::string_view text_;
  std::size_t position_ = 0;
  std::vector<Token> tokens_;
};

}  // namespace

std::vector<Token> Tokenize(std::string_view statement) {
  return Lexer(statement).Run();
}

}  // namespace jet::sql
