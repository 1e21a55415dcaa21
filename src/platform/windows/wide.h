#pragma once

#include <string>
#include <string_view>

#include "foundation/encodings.h"

namespace platform {

// UTF-8 to the wide characters of system calls, and back.
inline std::wstring ToWide(std::string_view text) {
  static_assert(sizeof(wchar_t) == sizeof(char16_t));
  const std::u16string units = tmw::Utf8ToUtf16(text);
  return {units.begin(), units.end()};
}

inline std::string FromWide(std::wstring_view text) {
  return tmw::Utf16ToUtf8(std::u16string(text.begin(), text.end()));
}

// UTF-8 to the ANSI entry points' code page 1251, and back.
inline std::string ToAnsi(std::string_view text) {
  return tmw::Utf8ToCodePage(tmw::CodePage::k1251, text);
}

inline std::string FromAnsi(std::string_view bytes) {
  return tmw::CodePageToUtf8(tmw::CodePage::k1251, bytes);
}

}  // namespace platform
