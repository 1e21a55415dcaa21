#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Small operations on UTF-8 texts.
namespace tmw {

inline constexpr std::string_view kCrLf = "\r\n";

// The pieces between the separators; an empty text has one empty piece.
std::vector<std::string> Split(std::string_view text, std::string_view separator);

// The other way round; no parts make an empty text.
std::string Joined(const std::vector<std::string>& parts, std::string_view separator);

// Without blanks (only the character U+0020) at both ends.
std::string Trim(std::string_view text);

// Without any of the given ASCII characters at both ends.
std::string TrimCharacters(std::string_view text, std::string_view characters);

// Equal apart from letter case, by the Unicode mapping of LowerCase.
bool EqualIgnoringCase(std::string_view a, std::string_view b);

// Upper-case hexadecimal without leading zeros; a negative code has eight digits of two's
// complement.
std::string ToHex(std::int32_t value);

// A text of somebody else's for a message: at most 200 UTF-16 units, with an ellipsis where it is
// cut; line breaks and other control characters become blanks.
std::string OneLine(std::string_view text);

// "text" in double quotes.
std::string Quoted(std::string_view text);

}  // namespace tmw
