#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "foundation/date_parts.h"

// The parts that all forms of dates and times share.
namespace jet {

// The numbers of a text such as "1/2/2003", up to four digits each; empty for any other form.
std::vector<std::int32_t> NumbersBetween(std::string_view text, char separator);

// Reads H:MM or H:MM:SS without checking ranges; returns false for any other form.
bool ReadTimeOfDay(std::string_view text, tmw::DateParts& parts);

// Years of two digits: 0-29 are 2000-2029, 30-99 are 1930-1999. Any other year is returned as is.
std::int32_t FullYear(std::int32_t year, bool is_short);

}  // namespace jet
