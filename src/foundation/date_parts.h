#pragma once

#include <cstdint>
#include <optional>

// Moments as days since 1899-12-30, the form of the database and of the product's date type: the
// fraction is the time of day, before that day too (-1.25 is 1899-12-29 06:00).
namespace tmw {

struct DateParts {
  std::int32_t year = 1899;
  std::int32_t month = 12;
  std::int32_t day = 30;
  std::int32_t hour = 0;
  std::int32_t minute = 0;
  std::int32_t second = 0;
};

// 100-01-01 and 9999-12-31.
inline constexpr double kFirstDay = -657434;
inline constexpr double kLastDay = 2958465;
// 2001-01-01.
inline constexpr std::int32_t kDay2001 = 36892;

bool IsDateInRange(double days);

// To the nearest second. The value must be in range.
DateParts PartsOfDate(double days);

// Nothing when a part is out of its range (years are 100 to 9999).
std::optional<double> DateFromParts(const DateParts& parts);

}  // namespace tmw
