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

// UTF-16 units of a stored text, which a field's size limits.
std::size_t CountUnits(std::string_view stored);

// The compressed form where it is shorter and the text allows it (only characters from U+0001 to
// U+00FF), else UTF-16.
std::string PackText(std::string_view text, bool may_compress);

}  // namespace jet::file
