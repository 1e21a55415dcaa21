#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "companion/os.h"
#include "foundation/encodings.h"

// Converts the three text forms of the interface to UTF-8 and back. Null is an empty text.
namespace companion {

inline std::string FromAnsi(const char* text) {
  return text == nullptr ? "" : os::FromNarrow(tmw::CodePage::k1251, text);
}

inline std::string FromOem(const char* text) {
  return text == nullptr ? "" : os::FromNarrow(tmw::CodePage::k866, text);
}

inline std::string FromUnits(const char16_t* text) {
  return text == nullptr ? "" : tmw::Utf16ToUtf8(text);
}

// Copies what fits, with a terminating zero.
template <typename Character, std::size_t kSize>
void PutText(Character (&field)[kSize], std::basic_string_view<Character> text) {
  const std::size_t length = std::min(text.size(), kSize - 1);
  std::copy_n(text.begin(), length, field);
  field[length] = 0;
}

template <std::size_t kSize>
void PutOem(char (&field)[kSize], const std::string& text) {
  PutText<char>(field, os::ToNarrow(tmw::CodePage::k866, text));
}

template <std::size_t kSize>
void PutUnits(char16_t (&field)[kSize], const std::string& text) {
  PutText<char16_t>(field, tmw::Utf8ToUtf16(text));
}

}  // namespace companion
