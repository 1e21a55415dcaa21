#pragma once

#include <optional>
#include <string_view>

namespace jet {

// What stands between two "#": month/day/year (day first when the month cannot be one),
// YYYY-MM-DD, a time (H:MM[:SS] [AM|PM]), or a day and a time. Years of two digits: 00-29 are
// 2000-2029, 30-99 are 1930-1999.
std::optional<double> ParseDateLiteral(std::string_view text);

}  // namespace jet
