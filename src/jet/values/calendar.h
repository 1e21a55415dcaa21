#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Date arithmetic (dates are days since 1899-12-30) and the names of months and days. Errors are 5.
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

// "yyyy", "q", "m", "y", "d", "w", "ww", "h", "n" or "s"; fails for any other text.
Interval ParseInterval(std::string_view text);

// Days of the week count from 1 (Sunday). Week 1 of a year is the one that contains 1 January (1),
// the first with at least four days (2), or the first full week (3).
struct WeekRules {
  std::int32_t first_day = 1;
  std::int32_t first_week = 1;
};

// 0 is the system's default: weeks begin on Monday, week 1 contains 1 January. Fails for numbers
// out of range.
WeekRules MakeWeekRules(std::int32_t first_day, std::int32_t first_week);

// The moment by the clock on the wall, to the second.
double LocalNow();

// The date must be in range.
std::int32_t PartOf(double days, Interval interval, WeekRules rules);

// A day past the end of the month becomes its last day. Fails if the result is out of range.
double AddIntervals(double days, Interval interval, std::int32_t count);

// The number of interval boundaries between two dates (kWeekday: whole weeks).
std::int64_t IntervalsBetween(double from, double to, Interval interval, WeekRules rules);

// Parts outside their range carry over; years 0-29 are 2000-2029, 30-99 are 1930-1999. Fails if
// the result is out of range.
double DateOf(std::int64_t year, std::int64_t month, std::int64_t day);

// 1 is January, 1 is Sunday.
std::string MonthName(std::int32_t month, bool is_short);
std::string MonthNameInDate(std::int32_t month);  // "января"
std::string DayName(std::int32_t weekday, bool is_short);

}  // namespace jet
