#pragma once

#include <string>
#include <string_view>

// The order of texts in the database: case is ignored, ё sorts right after е, hyphens and
// apostrophes are compared last, trailing blanks are ignored.
namespace jet {

// Keys compared as unsigned bytes give the order of the texts' first 255 characters. Characters
// outside code page 1251 sort after all others, by code point.
std::string SortKey(std::string_view text);

// Negative, zero or positive, like comparing keys of the whole texts.
int CompareTexts(std::string_view a, std::string_view b);

}  // namespace jet
