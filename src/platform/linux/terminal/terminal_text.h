#pragma once

#include <span>
#include <string>
#include <string_view>

// Texts on their way to and from a terminal.
namespace platform {

// The encoding of the user's locale; if that locale is not installed, the encoding that its name
// ends with ("ru_RU.KOI8-R").
std::string EncodingOfLocale();

// What cannot be converted becomes "?", a byte or (of UTF-8) a character at a time. An encoding
// that the system does not know leaves the text as it is.
std::string ConvertText(std::string_view text, const std::string& from, const std::string& to);

// Control characters out of a UTF-8 text: those of ASCII and U+0080 to U+009F, line feeds excepted.
std::string WithoutControls(std::string_view text);

// How many columns a UTF-8 text without controls takes: a character takes none, one or two.
int ColumnsOf(std::string_view text);

// The text in so many columns; of a longer one the middle gives way to the ellipsis, because the
// ends of paths and addresses matter more.
std::string FitColumns(std::string_view text, int columns, std::string_view ellipsis);

// Whether the answer that was typed is one of the words.
bool IsOneOf(std::string_view answer, std::span<const char* const> words);

}  // namespace platform
