#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Arithmetic with moments (days since 1899-12-30) and the names of months and days.
namespace jet {

enum class Interval {
  kYear,
  kQuarter,
  kMonth,
  kDayOfYear,
  kDay,
  kWeekday,
  kWeek,
  kHour,
  kMinute,
  kSecond,
};

// "yyyy", "q", "m", "y", "d", "w", "ww", "h", "n" or "s"; 5 for any other text.
Interval ParseInterval(std::string_view text);

// Days of the week count from 1, Sunday. The first week of a year is the one with its first day,
// with four of its days, or the first whole one.
struct WeekRules {
  std::int32_t first_day = 1;
  std::int32_t first_week = 1;
};

// 0 stands for the system's way: weeks begin on Monday, the first one with the year. 5 for numbers
// out of range.
WeekRules MakeWeekRules(std::int32_t first_day, std::int32_t first_week);

// A part of a moment, which must be in range.
std::int32_t PartOf(double days, Interval interval, WeekRules rules);

// So many intervals further on; a day that the month lacks becomes its last one. 5 when the result
// is no date.
double AddIntervals(double days, Interval interval, std::int32_t count);

// How many borders of intervals lie between two moments (kWeekday: whole weeks).
std::int64_t IntervalsBetween(double from, double to, Interval interval, WeekRules rules);

// Parts out of their range carry over; years 0-29 are 2000-2029, 30-99 are 1930-1999. 5 when the
// result is no date.
double DateOf(std::int64_t year, std::int64_t month, std::int64_t day);

// 1 is January, 1 is Sunday.
std::string MonthName(std::int32_t month, bool is_short);
std::string MonthNameInDate(std::int32_t month);  // "января"
std::string DayName(std::int32_t weekday, bool is_short);

}  // namespace jet
