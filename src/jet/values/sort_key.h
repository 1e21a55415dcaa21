#pragma once

#include <string>
#include <string_view>

// The order of texts in the database: case is ignored, ё sorts right after е, hyphens and
// apostrophes are compared last, trailing blanks are ignored.
namespace jet {

// Keys compared as unsigned bytes give the order of the texts' first 255 characters. Characters
// that have no known weight sort after all others, by code point.
std::string SortKey(std::string_view text);

// Appends the key of a text in UTF-16.
void AppendSortKey(std::u16string_view text, std::string& key);

// Whether all characters have known weights: those of code page 1251 and of the Latin letters to
// U+017F.
bool HasKnownOrder(std::string_view text);

// Negative, zero or positive, like comparing keys of the whole texts.
int CompareTexts(std::string_view a, std::string_view b);

}  // namespace jet
