#include "platform/linux/reg_file.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <vector>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "platform/linux/linux_texts.h"

namespace platform {
namespace {

namespace texts = linux_texts;

constexpr std::string_view kHeader4 = "REGEDIT4";
constexpr std::string_view kHeader5 = "Windows Registry Editor Version 5.00";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kBlanks = " \t";
constexpr std::uint32_t kTypeString = 1;
constexpr std::uint32_t kTypeExpandString = 2;
constexpr std::uint32_t kTypeDoubleWord = 4;

std::string NormalKey(std::string_view key) {
  static constexpr std::string_view kRedirection = "\\wow6432node\\";
  std::string normal = tmw::LowerCase(key) + "\\";
  const std::size_t found = normal.find(kRedirection);
  if (found != std::string::npos) normal.erase(found, kRedirection.size() - 1);
  return normal;
}

bool ReadHex(std::string_view digits, std::size_t most_digits, std::uint32_t& value) {
  if (digits.empty() || digits.size() > most_digits) return false;
  const char* const end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, value, 16);
  return result.ec == std::errc{} && result.ptr == end;
}

// Reads the lines of one file; the first fault ends the reading.
class Parser {
 public:
  explicit Parser(std::string_view bytes) : bytes_(bytes) {}

  RegFileResult Parse() {
    if (Decode()) {
      while (line_ < lines_.size() && !result_.error)
        ParseLine(NextLine());
    }
    return std::move(result_);
  }

 private:
  // Converts the text to UTF-8 lines and removes the header; returns false if nothing is left to
  // parse.
  bool Decode() {
    const bool is_utf16 = bytes_.starts_with(kUtf16Mark);
    const bool is_utf8 = bytes_.starts_with(kUtf8Mark);
    std::string text(bytes_);
    if (is_utf16) {
      text = tmw::Utf16ToUtf8(tmw::BytesToUtf16(bytes_.substr(kUtf16Mark.size())));
    } else if (is_utf8) {
      text.erase(0, kUtf8Mark.size());
    }
    is_version_4_ = tmw::TrimCharacters(text, " \t\r\n").starts_with(kHeader4);
    if (is_version_4_ && !is_utf16 && !is_utf8)
      text = tmw::CodePageToUtf8(tmw::CodePage::k1251, text);
    lines_ = tmw::Split(text, "\n");
    return TakeHeader();
  }

  bool TakeHeader() {
    while (line_ < lines_.size()) {
      const std::string header = NextLine();
      if (header.empty()) continue;
      if (header != kHeader4 && header != kHeader5) Fail(texts::kNoHeader);
      return !result_.error;
    }
    return false;
  }

  std::string NextLine() {
    const std::string& line = lines_[line_++];
    if (!tmw::TryUtf8ToUtf16(line)) Fail(texts::kNotUtf8);
    if (line.find('\0') != std::string::npos) Fail(texts::kZeroCharacter);
    return tmw::TrimCharacters(line, " \t\r");
  }

  void Fail(std::string reason) {
    if (!result_.error) result_.error = RegFileError{static_cast<int>(line_), std::move(reason)};
  }

  void ParseLine(const std::string& line) {
    if (result_.error || line.empty() || line.front() == ';') return;
    if (line.front() == '[') return ParseKey(line);
    std::string_view rest = line;
    std::string name;
    if (rest.front() == '@') {
      rest.remove_prefix(1);
    } else if (!TakeQuoted(rest, name)) {
      return Fail(texts::kUnknownLine);
    }
    SkipBlanks(rest);
    if (!rest.starts_with('=')) return Fail(texts::kNoEqualsSign);
    rest.remove_prefix(1);
    SkipBlanks(rest);
    if (!has_key_) return Fail(texts::kValueBeforeKey);
    ParseValue(name, rest);
  }

  void ParseKey(const std::string& line) {
    const std::size_t end = line.rfind(']');
    if (end == std::string::npos) return Fail(texts::kOpenKey);
    if (!IsEnd(std::string_view(line).substr(end + 1))) return Fail(texts::kTextAfterKey);
    key_ = line.substr(1, end - 1);
    has_key_ = true;
    is_deleted_key_ = key_.starts_with('-');
    if (is_deleted_key_) result_.file.DeleteKey(std::string_view(key_).substr(1));
  }

  void ParseValue(const std::string& name, std::string_view rest) {
    if (rest.starts_with('-')) {
      rest.remove_prefix(1);
      if (!IsEnd(rest)) return Fail(texts::kTextAfterDeletion);
      if (!is_deleted_key_) result_.file.Delete(key_, name);
      return;
    }
    RegValue value;
    if (rest.starts_with('"')) {
      std::string text;
      if (!TakeQuoted(rest, text)) return Fail(texts::kBadQuotedText);
      if (!IsEnd(rest)) return Fail(texts::kTextAfterQuotedText);
      value = std::move(text);
    } else if (rest.starts_with("dword:")) {
      std::uint32_t number = 0;
      if (!ReadHex(CutComment(rest.substr(rest.find(':') + 1)), 8, number))
        return Fail(texts::kBadDoubleWord);
      value = number;
    } else if (rest.starts_with("hex:") || rest.starts_with("hex(")) {
      if (!ParseHexValue(rest, value)) return;
    } else {
      return Fail(texts::kUnknownValueKind);
    }
    if (!is_deleted_key_) result_.file.Set(key_, name, std::move(value));
  }

  // "hex:61,00" or "hex(type):61,00", which goes on in the next line after "\".
  bool ParseHexValue(std::string_view rest, RegValue& value) {
    std::uint32_t type = 0;
    rest.remove_prefix(3);
    if (rest.starts_with('(')) {
      const std::size_t end = rest.find(')');
      if (end == std::string_view::npos || !ReadHex(rest.substr(1, end - 1), 8, type)) {
        Fail(texts::kBadHexKind);
        return false;
      }
      rest.remove_prefix(end + 1);
    }
    std::string bytes;
    if (!rest.starts_with(':') || !ReadBytes(rest.substr(1), bytes)) {
      Fail(texts::kBadHexBytes);
      return false;
    }
    if (type == kTypeString || type == kTypeExpandString) {
      const std::string text = is_version_4_ ? tmw::CodePageToUtf8(tmw::CodePage::k1251, bytes)
                                             : tmw::Utf16ToUtf8(tmw::BytesToUtf16(bytes));
      value = text.substr(0, text.find('\0'));
    } else if (type == kTypeDoubleWord && bytes.size() == sizeof(std::uint32_t)) {
      std::uint32_t number = 0;
      for (std::size_t i = bytes.size(); i > 0; --i)
        number = (number << 8) | static_cast<unsigned char>(bytes[i - 1]);
      value = number;
    }
    return true;
  }

  bool ReadBytes(std::string_view first_line, std::string& bytes) {
    std::string text = CutComment(first_line);
    while (text.ends_with('\\') && line_ < lines_.size()) {
      text.pop_back();
      text += CutComment(NextLine());
    }
    if (text.empty()) return true;
    for (const std::string& piece : tmw::Split(text, ",")) {
      std::uint32_t byte = 0;
      if (!ReadHex(tmw::TrimCharacters(piece, kBlanks), 2, byte)) return false;
      bytes.push_back(static_cast<char>(byte));
    }
    return true;
  }

  // Takes a text in double quotes off the front of rest.
  static bool TakeQuoted(std::string_view& rest, std::string& text) {
    if (!rest.starts_with('"')) return false;
    for (std::size_t i = 1; i < rest.size(); ++i) {
      char c = rest[i];
      if (c == '"') {
        rest.remove_prefix(i + 1);
        return true;
      }
      if (c == '\\') {
        if (++i >= rest.size()) return false;
        c = rest[i];
        if (c != '\\' && c != '"') return false;
      }
      text.push_back(c);
    }
    return false;
  }

  static void SkipBlanks(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
  }

  static std::string CutComment(std::string_view rest) {
    return tmw::TrimCharacters(rest.substr(0, rest.find(';')), kBlanks);
  }

  static bool IsEnd(std::string_view rest) { return CutComment(rest).empty(); }

  std::string_view bytes_;
  std::vector<std::string> lines_;
  std::size_t line_ = 0;  // of the next line; the 1-based number of the one being read
  bool is_version_4_ = false;
  std::string key_;
  bool has_key_ = false;
  bool is_deleted_key_ = false;
  RegFileResult result_;
};

}  // namespace

const RegValue* RegFile::Find(std::string_view key, std::string_view name) const {
  const auto found = values_.find({NormalKey(key), tmw::LowerCase(name)});
  return found == values_.end() ? nullptr : &found->second;
}

void RegFile::Set(std::string_view key, std::string_view name, RegValue value) {
  values_[{NormalKey(key), tmw::LowerCase(name)}] = std::move(value);
}

void RegFile::Delete(std::string_view key, std::string_view name) {
  values_.erase({NormalKey(key), tmw::LowerCase(name)});
}

void RegFile::DeleteKey(std::string_view key) {
  const std::string prefix = NormalKey(key);
  std::erase_if(values_, [&](const auto& value) { return value.first.first.starts_with(prefix); });
}

RegFileResult ParseRegFile(std::string_view bytes) {
  return Parser(bytes).Parse();
}

}  // namespace platform
