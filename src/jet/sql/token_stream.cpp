#include "jet/sql/token_stream.h"

#include <algorithm>
#include <utility>

#include "jet/errors.h"
#include "jet/sql/reserved_words.h"

namespace jet::sql {
namespace {

bool EqualAscii(std::string_view text, std::string_view lower) {
  return std::equal(text.begin(), text.end(), lower.begin(), lower.end(), [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + 0x20) : a) == b;
  });
}

}  // namespace

TokenStream::TokenStream(std::string_view text, std::size_t begin, std::size_t end)
    : text_(text), tokens_(Tokenize(text.substr(begin, end - begin))), clause_(kInvalidStatement) {
  for (Token& token : tokens_) {
    token.begin += begin;
    token.end += begin;
  }
}

const Token& TokenStream::Peek(std::size_t ahead) const {
  return tokens_[std::min(next_ + ahead, tokens_.size() - 1)];
}

Token TokenStream::Take() {
  Token token = Peek();
  if (next_ + 1 < tokens_.size()) ++next_;
  return token;
}

bool TokenStream::AtKeyword(std::string_view keyword, std::size_t ahead) const {
  const Token& token = Peek(ahead);
  return token.kind == TokenKind::kName && EqualAscii(token.text, keyword);
}

bool TokenStream::AtSymbol(std::string_view symbol, std::size_t ahead) const {
  const Token& token = Peek(ahead);
  return token.kind == TokenKind::kSymbol && token.text == symbol;
}

bool TokenStream::TakeKeyword(std::string_view keyword) {
  if (!AtKeyword(keyword)) return false;
  Take();
  return true;
}

bool TokenStream::TakeSymbol(std::string_view symbol) {
  if (!AtSymbol(symbol)) return false;
  Take();
  return true;
}

void TokenStream::ExpectKeyword(std::string_view keyword) {
  if (!TakeKeyword(keyword)) FailAt(keyword);
}

void TokenStream::ExpectSymbol(std::string_view symbol) {
  if (!TakeSymbol(symbol)) FailAt(symbol);
}

bool TokenStream::TakeDescending() {
  return !TakeKeyword("asc") && TakeKeyword("desc");
}

bool TokenStream::AtName(std::size_t ahead) const {
  const Token& token = Peek(ahead);
  if (token.kind == TokenKind::kBracketedName) return true;
  return token.kind == TokenKind::kName && !IsReservedWord(token.text);
}

std::string TokenStream::ExpectName() {
  if (!AtName()) FailAt("имя");
  return Take().text;
}

std::size_t TokenStream::LastEnd() const {
  return next_ == 0 ? 0 : tokens_[next_ - 1].end;
}

std::string_view TokenStream::TextBetween(std::size_t begin, std::size_t end) const {
  return text_.substr(begin, end - begin);
}

std::int32_t TokenStream::SetClause(std::int32_t error_number) {
  return std::exchange(clause_, error_number);
}

void TokenStream::FailAt(std::string_view expected) const {
  const Token& token = Peek();
  const std::string found = token.kind == TokenKind::kEnd
                                ? "конец текста"
                                : "\"" + std::string(TextBetween(token.begin, token.end)) + "\"";
  const std::string reason = "ожидалось \"" + std::string(expected) + "\", а стоит " + found;
  if (clause_ == kSyntaxInExpression) Fail(clause_, reason, Excerpt(text_));
  if (clause_ == kInvalidStatement) Fail(clause_, Excerpt(text_));
  Fail(clause_, reason);
}

}  // namespace jet::sql
