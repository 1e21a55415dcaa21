#include "companion/rar/names.h"

#include <algorithm>
#include <array>

#include "companion/rar/limits.h"
#include "foundation/encodings.h"

namespace companion::rar {
namespace {

using tmw::CodePage;

// The coded UTF-16 of RAR 4 (libarchive documents it in its reader): a common high byte, then
// groups of four characters after a byte of four 2-bit kinds, highest first.
class CodedName {
 public:
  CodedName(std::string_view plain, std::string_view coded) : plain_(plain), coded_(coded) {}

  std::optional<std::u16string> Decode() {
    const auto common = static_cast<std::uint16_t>(Next() << 8U);
    while (position_ < coded_.size()) {
      const unsigned kinds = Next();
      for (int shift = 6; shift >= 0 && position_ < coded_.size(); shift -= 2) {
        if (!DecodeOne(kinds >> static_cast<unsigned>(shift) & 3U, common)) return std::nullopt;
      }
    }
    return std::move(name_);
  }

 private:
  bool DecodeOne(unsigned kind, std::uint16_t common) {
    switch (kind) {
      case 0:
        name_.push_back(static_cast<char16_t>(Next()));
        return true;
      case 1:
        name_.push_back(static_cast<char16_t>(common | Next()));
        return true;
      case 2: {
        const unsigned low = Next();
        name_.push_back(static_cast<char16_t>(low | Next() << 8U));
        return true;
      }
      default:
        return DecodeRun(common);
    }
  }

  // A run of the plain name: unchanged, or with an offset added and the common high byte.
  bool DecodeRun(std::uint16_t common) {
    const unsigned first = Next();
    const bool shifted = (first & 0x80U) != 0;
    const unsigned difference = shifted ? Next() : 0;
    for (unsigned count = (first & 0x7FU) + 2; count > 0; --count) {
      if (name_.size() >= plain_.size()) return false;
      const auto byte = static_cast<unsigned char>(plain_[name_.size()]);
      const unsigned low = (byte + difference) & 0xFFU;
      name_.push_back(static_cast<char16_t>(shifted ? common | low : low));
    }
    return true;
  }

  unsigned Next() {
    return position_ < coded_.size() ? static_cast<unsigned char>(coded_[position_++]) : 0U;
  }

  std::string_view plain_;
  std::string_view coded_;
  std::size_t position_ = 0;
  std::u16string name_;
};

DecodedName FromUtf8(std::string_view bytes) {
  const auto units = tmw::TryUtf8ToUtf16(bytes);
  if (!units) return {tmw::Utf16ToUtf8(tmw::Utf8ToUtf16(bytes)), false};
  return {std::string(bytes), bytes.find('\0') == std::string_view::npos};
}

bool IsDeviceName(const std::string& part) {
  static constexpr std::array<std::string_view, 6> kDevices = {"con", "prn",    "aux",
                                                               "nul", "conin$", "conout$"};
  std::string stem = tmw::LowerCase(part.substr(0, part.find('.')));
  while (stem.ends_with(' '))
    stem.pop_back();
  if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) return true;
  // Windows takes superscript digits for digits too.
  const std::u16string units = tmw::Utf8ToUtf16(stem);
  if (units.size() != 4 || !(stem.starts_with("com") || stem.starts_with("lpt"))) return false;
  const char16_t digit = units[3];
  return (digit >= u'1' && digit <= u'9') || digit == u'\u00B9' || digit == u'\u00B2' ||
         digit == u'\u00B3';
}

bool IsSafePart(const std::string& part) {
  // Empty, "." and ".." included: each ends in a dot or has no last character.
  if (part.empty() || part.back() == '.' || part.back() == ' ') return false;
  const bool has_bad_character = std::any_of(part.begin(), part.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F || c == ':';
  });
  return !has_bad_character && !IsDeviceName(part);
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// "09" becomes "10", "99" becomes "100".
void Increment(std::string& name, std::size_t first, std::size_t end) {
  for (std::size_t i = end; i-- > first;) {
    if (name[i] != '9') {
      ++name[i];
      return;
    }
    name[i] = '0';
  }
  name.insert(first, "1");
}

}  // namespace

DecodedName DecodeRar5Name(std::string_view bytes) {
  return FromUtf8(bytes);
}

DecodedName DecodeRar4Name(std::string_view bytes, bool has_unicode, bool from_unix) {
  const std::size_t zero = bytes.find('\0');
  if (has_unicode && zero == std::string_view::npos) return FromUtf8(bytes);
  if (has_unicode) {
    const auto units = CodedName(bytes.substr(0, zero), bytes.substr(zero + 1)).Decode();
    if (!units) return {tmw::CodePageToUtf8(CodePage::k866, bytes.substr(0, zero)), false};
    return {tmw::Utf16ToUtf8(*units), units->find(u'\0') == std::u16string::npos};
  }
  if (from_unix && tmw::TryUtf8ToUtf16(bytes)) return FromUtf8(bytes);
  return {tmw::CodePageToUtf8(CodePage::k866, bytes), zero == std::string_view::npos};
}

std::optional<std::vector<std::string>> SafeNameParts(const DecodedName& name) {
  if (!name.sound || tmw::Utf8ToUtf16(name.text).size() > kMaxNameUnits) return std::nullopt;
  std::vector<std::string> parts(1);
  for (const char c : name.text) {
    if (c == '/' || c == '\\') {
      parts.emplace_back();
    } else {
      parts.back().push_back(c);
    }
  }
  if (!std::all_of(parts.begin(), parts.end(), IsSafePart)) return std::nullopt;
  return parts;
}

std::optional<std::string> NextVolumeName(const std::string& name, bool new_names) {
  const std::size_t slash = name.find_last_of("/\\");
  const std::size_t base = slash == std::string::npos ? 0 : slash + 1;
  const std::size_t found = name.rfind('.');
  const bool has_extension = found != std::string::npos && found >= base;
  const std::size_t dot = has_extension ? found : name.size();
  std::string next = name;
  if (new_names) {
    std::size_t end = dot;
    while (end > base && !IsDigit(next[end - 1]))
      --end;
    std::size_t first = end;
    while (first > base && IsDigit(next[first - 1]))
      --first;
    if (first == end) return std::nullopt;
    Increment(next, first, end);
    return next;
  }
  const std::string extension = next.substr(dot);
  const bool is_numbered = extension.size() == 4 && IsDigit(extension[2]) && IsDigit(extension[3]);
  if (!is_numbered) return next.substr(0, dot) + ".r00";
  if (extension.ends_with("99")) {
    if (next[dot + 1] == 'z' || next[dot + 1] == 'Z') return std::nullopt;
    ++next[dot + 1];
    next.replace(dot + 2, 2, "00");
  } else {
    Increment(next, dot + 2, dot + 4);
  }
  return next;
}

}  // namespace companion::rar
