#include "foundation/encodings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "foundation/encoding_tables.h"

namespace tmw {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kMalformed = 0xFFFFFFFF;

bool IsSurrogate(char32_t c) {
  return c >= 0xD800 && c <= 0xDFFF;
}

// Decodes the sequence at the position and moves past it; a malformed one gives kMalformed and
// moves one byte (RFC 3629).
char32_t NextCodePoint(std::string_view text, std::size_t& position) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(position);
  if (lead < 0x80) {
    ++position;
    return lead;
  }
  std::size_t length = 0;
  char32_t value = 0;
  char32_t least = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, value = lead & 0x1FU, least = 0x80;
  } else if ((lead & 0xF0U) == 0xE0) {
    length = 3, value = lead & 0x0FU, least = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, value = lead & 0x07U, least = 0x10000;
  }
  if (length == 0 || text.size() - position < length) {
    ++position;
    return kMalformed;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if (!ContinuesCharacter(text[position + i])) {
      ++position;
      return kMalformed;
    }
    value = (value << 6U) | (byte(position + i) & 0x3FU);
  }
  if (value < least || value > 0x10FFFF || IsSurrogate(value)) {
    ++position;
    return kMalformed;
  }
  position += length;
  return value;
}

// How many ASCII characters stand from the position on.
std::size_t AsciiRun(std::string_view text, std::size_t position) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::size_t end = position;
  for (std::uint64_t eight = 0; text.size() - end >= sizeof eight; end += sizeof eight) {
    std::memcpy(&eight, text.data() + end, sizeof eight);
    if ((eight & kHighBits) != 0) break;
  }
  while (end < text.size() && static_cast<unsigned char>(text[end]) < 0x80)
    ++end;
  return end - position;
}

char16_t* PutUtf16(char16_t* to, char32_t c) {
  if (c < 0x10000) {
    *to++ = static_cast<char16_t>(c);
    return to;
  }
  *to++ = static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10U));
  *to++ = static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FFU));
  return to;
}

// Decodes a text; `malformed` stands for each malformed byte. Returns false if there is one and
// malformed is kMalformed.
bool DecodeUtf8(std::string_view text, char32_t malformed, std::u16string& result) {
  // No character has more units than bytes.
  result.resize(text.size());
  char16_t* to = result.data();
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t run = AsciiRun(text, i);
    to = std::copy_n(text.data() + i, run, to);
    i += run;
    // A word of Cyrillic letters is taken without looking for ASCII after each of them.
    while (i < text.size() && static_cast<unsigned char>(text[i]) >= 0x80) {
      char32_t c = NextCodePoint(text, i);
      if (c == kMalformed) c = malformed;
      if (c == kMalformed) return false;
      to = PutUtf16(to, c);
    }
  }
  result.resize(static_cast<std::size_t>(to - result.data()));
  return true;
}

const std::array<char16_t, 128>& UpperHalf(CodePage page) {
  return page == CodePage::k1251 ? encoding_tables::kCodePage1251 : encoding_tables::kCodePage866;
}

std::optional<char> EncodeCharacter(CodePage page, char32_t c) {
  if (c < 0x80) return static_cast<char>(c);
  const auto& upper = UpperHalf(page);
  const auto* const found = std::find(upper.begin(), upper.end(), c);
  if (found == upper.end()) return std::nullopt;
  return static_cast<char>(0x80 + std::distance(upper.begin(), found));
}

}  // namespace

void AppendUtf8(std::string& text, char32_t code_point) {
  char32_t c = code_point;
  if (c > 0x10FFFF || IsSurrogate(c)) c = kReplacement;
  const auto put = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | (c >> 6U));
    put(0x80 | (c & 0x3FU));
  } else if (c < 0x10000) {
    put(0xE0 | (c >> 12U));
    put(0x80 | ((c >> 6U) & 0x3FU));
    put(0x80 | (c & 0x3FU));
  } else {
    put(0xF0 | (c >> 18U));
    put(0x80 | ((c >> 12U) & 0x3FU));
    put(0x80 | ((c >> 6U) & 0x3FU));
    put(0x80 | (c & 0x3FU));
  }
}

bool IsWellFormedUtf8(std::string_view text) {
  for (std::size_t i = AsciiRun(text, 0); i < text.size(); i += AsciiRun(text, i)) {
    if (NextCodePoint(text, i) == kMalformed) return false;
  }
  return true;
}

std::size_t CountCharacters(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !ContinuesCharacter(c); }));
}

std::u16string Utf8ToUtf16(std::string_view text) {
  std::u16string result;
  DecodeUtf8(text, kReplacement, result);
  return result;
}

std::optional<std::u16string> TryUtf8ToUtf16(std::string_view text) {
  std::u16string result;
  if (!DecodeUtf8(text, kMalformed, result)) return std::nullopt;
  return result;
}

std::string Utf16ToUtf8(std::u16string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    const bool is_high = c >= 0xD800 && c <= 0xDBFF;
    if (is_high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10U) + (text[i + 1] - 0xDC00U);
      ++i;
    }
    AppendUtf8(result, c);
  }
  return result;
}

std::string Utf8ToCodePage(CodePage page, std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const char32_t c = NextCodePoint(text, i);
    const std::optional<char> byte = EncodeCharacter(page, c);
    if (byte) {
      result.push_back(*byte);
    } else {
      result.append(c != kMalformed && c >= 0x10000 ? 2 : 1, '?');
    }
  }
  return result;
}

std::optional<std::string> TryUtf8ToCodePage(CodePage page, std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::optional<char> byte = EncodeCharacter(page, NextCodePoint(text, i));
    if (!byte) return std::nullopt;
    result.push_back(*byte);
  }
  return result;
}

std::string CodePageToUtf8(CodePage page, std::string_view bytes) {
  const auto& upper = UpperHalf(page);
  std::string result;
  result.reserve(bytes.size() * 2);
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    AppendUtf8(result, value < 0x80 ? char32_t{value} : char32_t{upper[value - 0x80U]});
  }
  return result;
}

std::string Utf16ToBytes(std::u16string_view text) {
  std::string result(text.size() * 2, '\0');
  char* to = result.data();
  for (const char16_t unit : text) {
    *to++ = static_cast<char>(unit & 0xFFU);
    *to++ = static_cast<char>(unit >> 8U);
  }
  return result;
}

std::u16string BytesToUtf16(std::string_view bytes) {
  std::u16string result;
  result.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto low = static_cast<unsigned char>(bytes[i]);
    const auto high = static_cast<unsigned char>(bytes[i + 1]);
    result.push_back(static_cast<char16_t>(low | (high << 8U)));
  }
  return result;
}

char32_t LowerCaseCodePoint(char32_t code_point) {
  if (code_point < 0x80) {
    return code_point >= U'A' && code_point <= U'Z' ? code_point + 0x20 : code_point;
  }
  const auto& table = encoding_tables::kLowerCase;
  const auto* const range =
      std::lower_bound(table.begin(), table.end(), code_point,
                       [](const auto& entry, char32_t value) { return entry.last < value; });
  if (range == table.end() || code_point < range->first) return code_point;
  if ((code_point - range->first) % range->stride != 0) return code_point;
  return static_cast<char32_t>(static_cast<std::int32_t>(code_point) + range->delta);
}

std::string LowerCase(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const char32_t c = NextCodePoint(text, i);
    AppendUtf8(result, c == kMalformed ? kReplacement : LowerCaseCodePoint(c));
  }
  return result;
}

}  // namespace tmw
