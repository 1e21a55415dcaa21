#pragma once

#include <optional>
#include <string_view>

namespace jet {

// Reads the text between two "#": month/day/year (day first if the first number is above 12),
// YYYY-MM-DD, a day with the English name of its month ("1 jan 2005", "January 1, 2005"), a time
// (H:MM[:SS] [AM|PM]), or a day and a time.
std::optional<double> ParseDateLiteral(std::string_view text);

}  // namespace jet
