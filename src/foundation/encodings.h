#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Conversions between the program's UTF-8 and the encodings used at its boundaries. The tables are
// ours, so that both systems convert alike whatever the user's settings are. This pair of files
// stands alone: the companion library compiles it in.
namespace tmw {

enum class CodePage {
  k1251,  // Windows Cyrillic ("ANSI"). Byte 0x98, unassigned, stands for U+0098 both ways.
  k866,   // DOS Cyrillic ("OEM")
};

// Overlong forms and surrogates are malformed.
bool IsWellFormedUtf8(std::string_view text);

// Whether the byte continues a character of UTF-8 and begins none.
constexpr bool ContinuesCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// Of well-formed UTF-8.
std::size_t CountCharacters(std::string_view text);

// Malformed UTF-8 becomes U+FFFD, one for each byte that starts no valid sequence.
std::u16string Utf8ToUtf16(std::string_view text);

// Nothing when the text is not well-formed UTF-8 (overlong forms and surrogates included).
std::optional<std::u16string> TryUtf8ToUtf16(std::string_view text);

// A surrogate without its partner becomes U+FFFD.
std::string Utf16ToUtf8(std::u16string_view text);

// A character that the code page lacks becomes "?", one for each UTF-16 unit, as the system's own
// conversion does.
std::string Utf8ToCodePage(CodePage page, std::string_view text);

// Nothing when the text is malformed or holds a character that the code page lacks.
std::optional<std::string> TryUtf8ToCodePage(CodePage page, std::string_view text);

// Every byte stands for a character.
std::string CodePageToUtf8(CodePage page, std::string_view bytes);

// UTF-16 little-endian, without a byte-order mark.
std::string Utf16ToBytes(std::u16string_view text);

// The reverse; an odd last byte is dropped.
std::u16string BytesToUtf16(std::string_view bytes);

// One code point as UTF-8, appended. A surrogate or a value above U+10FFFF becomes U+FFFD.
void AppendUtf8(std::string& text, char32_t code_point);

// Unicode's simple lower-case mapping of one code point of the basic plane (others are unchanged);
// independent of the locale.
char32_t LowerCaseCodePoint(char32_t code_point);

// The same for a text. Malformed UTF-8 becomes U+FFFD.
std::string LowerCase(std::string_view text);

}  // namespace tmw
