#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ports/database_types.h"

// Values to texts and back, under Russian regional settings: "0,5", "01.02.2003 4:05:06".
namespace jet {

// Midnight is left out, as is the day 1899-12-30.
std::string DateText(double days);

// DD.MM.YYYY, D/M/YYYY (M/D/YYYY where that alone is a date) or YYYY-MM-DD, H:MM[:SS], or both
// separated by blanks.
std::optional<double> ParseDateText(std::string_view text);

// A number's text with "." as its decimal separator and without the blanks and no-break spaces that
// group the digits before it.
std::string PlainNumber(std::string_view text);

// The whole text must be a number; both "." and "," are decimal separators.
std::optional<double> ParseNumberText(std::string_view text);

// Booleans are "-1" and "0". Nothing for Null, Empty, binary and other values without a text.
std::optional<std::string> ValueText(const ports::DatabaseValue& value);

// "{guid {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}}" for 16 bytes. The parser also accepts single
// braces and none.
std::string GuidText(std::string_view bytes);
std::optional<std::string> ParseGuidText(std::string_view text);

}  // namespace jet
