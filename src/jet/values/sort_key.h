#pragma once

#include <string>
#include <string_view>

// The order of texts in the database: case is ignored, ё stands beside е, hyphens and apostrophes
// count last, blanks at the end do not count at all.
namespace jet {

// The bytes whose unsigned order is the texts' order; at most the first 255 characters count. A
// character outside code page 1251 sorts behind all others, by its code point.
std::string SortKey(std::string_view text);

// Below, at or above zero, as the keys of the whole texts compare.
int CompareTexts(std::string_view a, std::string_view b);

}  // namespace jet
