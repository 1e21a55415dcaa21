#include "foundation/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

#include "foundation/encodings.h"

namespace tmw {

std::vector<std::string> Split(std::string_view text, std::string_view separator) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end =
        separator.empty() ? std::string_view::npos : text.find(separator, start);
    if (end == std::string_view::npos) {
      pieces.emplace_back(text.substr(start));
      return pieces;
    }
    pieces.emplace_back(text.substr(start, end - start));
    start = end + separator.size();
  }
}

std::string Joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text += separator;
    text += parts[i];
  }
  return text;
}

std::string Trim(std::string_view text) {
  return TrimCharacters(text, " ");
}

std::string TrimCharacters(std::string_view text, std::string_view characters) {
  const std::size_t first = text.find_first_not_of(characters);
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(characters) - first + 1));
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return LowerCase(a) == LowerCase(b);
}

std::string ToHex(std::int32_t value) {
  std::array<char, 8> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(),
                                    static_cast<std::uint32_t>(value), 16);
  std::string text(digits.data(), result.ptr);
  for (char& digit : text) {
    if (digit >= 'a') digit = static_cast<char>(digit - 'a' + 'A');
  }
  return text;
}

std::string OneLine(std::string_view text) {
  constexpr std::size_t kMaxShown = 200;
  std::u16string units = Utf8ToUtf16(text);
  const bool is_cut = units.size() > kMaxShown;
  if (is_cut) {
    const bool splits_pair = (units[kMaxShown] & 0xFC00U) == 0xDC00U;
    units.resize(splits_pair ? kMaxShown - 1 : kMaxShown);
  }
  std::replace_if(
      units.begin(), units.end(), [](char16_t unit) { return unit < 0x20 || unit == 0x7F; }, u' ');
  return Utf16ToUtf8(units) + (is_cut ? "…" : "");
}

std::string Quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

}  // namespace tmw
