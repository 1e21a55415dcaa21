#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Days of the calendar, counted from 1970-01-01 and written YYYY-MM-DD.
namespace tmw {

// Nothing unless the text is a day of that form.
std::optional<std::int64_t> ReadUtcDay(std::string_view text);

std::string UtcDayText(std::int64_t day);

// The day of a moment in seconds since 1970-01-01 00:00.
std::int64_t UtcDayOf(std::int64_t seconds);

}  // namespace tmw
