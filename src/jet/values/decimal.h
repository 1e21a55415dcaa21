#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Decimal numbers as texts: "-12.5", the digits behind the point without trailing zeros.
namespace jet {

// The number rounded to that many places behind the point, halves away from zero. Nothing if the
// text is no plain number or has more digits than the precision allows.
std::optional<std::string> FitDecimal(std::string_view number, std::int32_t precision,
                                      std::int32_t scale);

// Below, at or above zero, like the numbers.
int CompareDecimals(std::string_view a, std::string_view b);

}  // namespace jet
