#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "foundation/date_parts.h"

// What dates and times of day are made of, whatever the order.
namespace jet {

// The numbers, of up to four digits each, of a text that consists of them and one separator; empty
// when it has another form.
std::vector<std::int32_t> NumbersBetween(std::string_view text, char separator);

// Reads H:MM or H:MM:SS into the parts, out of range or not; returns false for another form.
bool ReadTimeOfDay(std::string_view text, tmw::DateParts& parts);

// A year of two digits: 0-29 are 2000-2029, 30-99 are 1930-1999. Any other stays as it is.
std::int32_t FullYear(std::int32_t year, bool is_short);

}  // namespace jet
