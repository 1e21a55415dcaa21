#pragma once

#include <string>
#include <string_view>

namespace jet {

// A number without its sign, as "12345.678", by one section of a pattern such as "#,##0.00".
std::string FormatDigits(std::string_view digits, std::string_view section);

}  // namespace jet
