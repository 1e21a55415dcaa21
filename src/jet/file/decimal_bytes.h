#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace jet::file {

// A number of up to 38 digits as numeric columns store it: 17 bytes, the sign and four words of
// 32 bits, the highest first. As text the number has "." as its separator and no needless zeros.

std::string DecimalText(std::string_view stored, std::uint8_t scale);

// Nothing when the text is no number, has more digits behind its point than the scale, or does not
// fit.
std::optional<std::string> DecimalBytes(std::string_view text, std::uint8_t scale);

}  // namespace jet::file
