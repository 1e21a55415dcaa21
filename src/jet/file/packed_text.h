#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace jet::file {

// Texts are stored as UTF-16, or behind a mark with one byte for each character below 256, a zero
// byte switching between the two ways.

// As UTF-8. Bytes that end within a character lose that character; surrogates without their
// partner become U+FFFD.
std::string UnpackText(std::string_view stored);
std::u16string UnpackUnits(std::string_view stored);  // surrogates as they are

// UTF-16 units of a stored text, which a field's size limits.
std::size_t CountUnits(std::string_view stored);

// False for a text that no form can hold: it begins with U+FEFF, which is the mark, and has a
// character whose lower byte is zero, which would switch between the forms.
bool CanPackText(std::string_view text);

// The compressed form where it is shorter and the text allows it (only characters from U+0001 to
// U+00FF), else UTF-16. 3421 for a text that cannot be packed.
std::string PackText(std::string_view text, bool may_compress);

}  // namespace jet::file
