#include "jet/values/calendar.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <ctime>
#include <iterator>

#include "foundation/date_parts.h"
#include "foundation/encodings.h"
#include "jet/errors.h"
#include "jet/values/date_numbers.h"

namespace jet {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::chrono::sys_days kDayZero{std::chrono::year{1899} / 12 / 30};
constexpr std::int64_t kSaturday = 7;  // the weekday of day zero

constexpr std::array<const char*, 12> kMonths = {"Январь",   "Февраль", "Март",   "Апрель",
                                                 "Май",      "Июнь",    "Июль",   "Август",
                                                 "Сентябрь", "Октябрь", "Ноябрь", "Декабрь"};
constexpr std::array<const char*, 12> kShortMonths = {"янв", "фев", "мар", "апр", "май", "июн",
                                                      "июл", "авг", "сен", "окт", "ноя", "дек"};
constexpr std::array<const char*, 12> kMonthsInDates = {"января",   "февраля", "марта",  "апреля",
                                                        "мая",      "июня",    "июля",   "августа",
                                                        "сентября", "октября", "ноября", "декабря"};
constexpr std::array<const char*, 7> kDays = {"воскресенье", "понедельник", "вторник", "среда",
                                              "четверг",     "пятница",     "суббота"};
constexpr std::array<const char*, 7> kShortDays = {"Вс", "Пн", "Вт", "Ср", "Чт", "Пт", "Сб"};

struct IntervalEntry {
  std::string_view text;
  std::int64_t months;  // or else seconds
  std::int64_t seconds;
};

// In the order of Interval.
constexpr IntervalEntry kIntervals[] = {
    {"yyyy", 12, 0},
    {"q", 3, 0},
    {"m", 1, 0},
    {"y", 0, kSecondsPerDay},
    {"d", 0, kSecondsPerDay},
    {"w", 0, kSecondsPerDay},
    {"ww", 0, 7 * kSecondsPerDay},
    {"h", 0, 3600},
    {"n", 0, 60},
    {"s", 0, 1},
};

std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor) {
  const std::int64_t quotient = value / divisor;
  return value % divisor < 0 ? quotient - 1 : quotient;
}

std::int64_t DayNumber(std::int64_t year, std::int64_t month, std::int64_t day) {
  const std::int64_t carried = FloorDivide(month - 1, 12);
  const std::chrono::year_month_day first{
      std::chrono::year{static_cast<int>(year + carried)},
      std::chrono::month{static_cast<unsigned>(month - 12 * carried)}, std::chrono::day{1}};
  return (std::chrono::sys_days{first} - kDayZero).count() + day - 1;
}

std::int64_t SecondOfDay(const tmw::DateParts& parts) {
  return std::int64_t{parts.hour} * 3600 + std::int64_t{parts.minute} * 60 + parts.second;
}

std::int64_t DayOf(const tmw::DateParts& parts) {
  return DayNumber(parts.year, parts.month, parts.day);
}

double Moment(std::int64_t day, std::int64_t second) {
  const auto whole = static_cast<double>(day);
  const double time = static_cast<double>(second) / static_cast<double>(kSecondsPerDay);
  if (whole < tmw::kFirstDay || whole > tmw::kLastDay) Fail(kInvalidCall);
  return day < 0 ? whole - time : whole + time;
}

// 0 for the first day of the week.
std::int64_t PlaceInWeek(std::int64_t day, std::int32_t first_day) {
  const std::int64_t place = (day + kSaturday - first_day) % 7;
  return place < 0 ? place + 7 : place;
}

std::int64_t FirstWeekOf(std::int64_t year, WeekRules rules) {
  const std::int64_t new_year = DayNumber(year, 1, 1);
  const std::int64_t place = PlaceInWeek(new_year, rules.first_day);
  const bool belongs_to_old_year =
      (rules.first_week == 2 && place > 3) || (rules.first_week == 3 && place > 0);
  return new_year - place + (belongs_to_old_year ? 7 : 0);
}

std::int32_t WeekOf(std::int64_t day, std::int32_t year, WeekRules rules) {
  std::int64_t start = FirstWeekOf(year, rules);
  if (day < start) start = FirstWeekOf(year - 1, rules);
  const std::int64_t next = FirstWeekOf(std::int64_t{year} + 1, rules);
  if (rules.first_week != 1 && day >= next) start = next;
  return static_cast<std::int32_t>((day - start) / 7 + 1);
}

double AddMonths(const tmw::DateParts& parts, std::int64_t count) {
  const std::int64_t month = parts.month + count;
  // Keeps the arithmetic below within the range of std::chrono.
  if (std::abs(count) > 200000) Fail(kInvalidCall);
  const std::int64_t first = DayNumber(parts.year, month, 1);
  const std::int64_t last = DayNumber(parts.year, month + 1, 1) - 1;
  return Moment(std::min(first + parts.day - 1, last), SecondOfDay(parts));
}

double AddSeconds(const tmw::DateParts& parts, std::int64_t count) {
  const std::int64_t second = DayOf(parts) * kSecondsPerDay + SecondOfDay(parts) + count;
  const std::int64_t day = FloorDivide(second, kSecondsPerDay);
  return Moment(day, second - day * kSecondsPerDay);
}

std::string NameAt(const char* const* names, std::size_t count, std::int32_t number) {
  if (number < 1 || static_cast<std::size_t>(number) > count) Fail(kInvalidCall);
  return names[number - 1];
}

}  // namespace

Interval ParseInterval(std::string_view text) {
  const std::string lower = tmw::LowerCase(text);
  const auto found = std::find_if(std::begin(kIntervals), std::end(kIntervals),
                                  [&](const IntervalEntry& entry) { return entry.text == lower; });
  if (found == std::end(kIntervals)) Fail(kInvalidCall);
  return static_cast<Interval>(found - kIntervals);
}

WeekRules MakeWeekRules(std::int32_t first_day, std::int32_t first_week) {
  if (first_day < 0 || first_day > 7 || first_week < 0 || first_week > 3) Fail(kInvalidCall);
  return {first_day == 0 ? 2 : first_day, first_week == 0 ? 1 : first_week};
}

double LocalNow() {
  const std::time_t now = std::time(nullptr);
  const std::tm* const local = std::localtime(&now);
  tmw::DateParts parts;
  parts.year = local->tm_year + 1900;
  parts.month = local->tm_mon + 1;
  parts.day = local->tm_mday;
  parts.hour = local->tm_hour;
  parts.minute = local->tm_min;
  parts.second = local->tm_sec > 59 ? 59 : local->tm_sec;
  return tmw::DateFromParts(parts).value_or(0);
}

std::int32_t PartOf(double days, Interval interval, WeekRules rules) {
  const tmw::DateParts parts = tmw::PartsOfDate(days);
  const std::int64_t day = DayOf(parts);
  switch (interval) {
    case Interval::kYear:
      return parts.year;
    case Interval::kQuarter:
      return (parts.month + 2) / 3;
    case Interval::kMonth:
      return parts.month;
    case Interval::kDayOfYear:
      return static_cast<std::int32_t>(day - DayNumber(parts.year, 1, 1) + 1);
    case Interval::kDay:
      return parts.day;
    case Interval::kWeekday:
      return static_cast<std::int32_t>(PlaceInWeek(day, rules.first_day) + 1);
    case Interval::kWeek:
      return WeekOf(day, parts.year, rules);
    case Interval::kHour:
      return parts.hour;
    case Interval::kMinute:
      return parts.minute;
    default:
      return parts.second;
  }
}

double AddIntervals(double days, Interval interval, std::int32_t count) {
  const tmw::DateParts parts = tmw::PartsOfDate(days);
  const IntervalEntry& entry = kIntervals[static_cast<std::size_t>(interval)];
  return entry.months != 0 ? AddMonths(parts, count * entry.months)
                           : AddSeconds(parts, count * entry.seconds);
}

std::int64_t IntervalsBetween(double from, double to, Interval interval, WeekRules rules) {
  const tmw::DateParts a = tmw::PartsOfDate(from);
  const tmw::DateParts b = tmw::PartsOfDate(to);
  const std::int64_t days = DayOf(b) - DayOf(a);
  const std::int64_t years = std::int64_t{b.year} - a.year;
  const auto hours = days * 24 + b.hour - a.hour;
  switch (interval) {
    case Interval::kYear:
      return years;
    case Interval::kQuarter:
      return years * 4 + (b.month + 2) / 3 - (a.month + 2) / 3;
    case Interval::kMonth:
      return years * 12 + b.month - a.month;
    case Interval::kWeekday:
      return days / 7;
    case Interval::kWeek:
      return (days - PlaceInWeek(DayOf(b), rules.first_day) +
              PlaceInWeek(DayOf(a), rules.first_day)) /
             7;
    case Interval::kHour:
      return hours;
    case Interval::kMinute:
      return hours * 60 + b.minute - a.minute;
    case Interval::kSecond:
      return days * kSecondsPerDay + SecondOfDay(b) - SecondOfDay(a);
    default:
      return days;
  }
}

double DateOf(std::int64_t year, std::int64_t month, std::int64_t day) {
  if (year >= 0 && year < 100) year = FullYear(static_cast<std::int32_t>(year), true);
  // Keeps the arithmetic below within the range of std::chrono.
  if (std::abs(year) > 15000 || std::abs(month) > 200000) Fail(kInvalidCall);
  return Moment(DayNumber(year, month, day), 0);
}

std::string MonthName(std::int32_t month, bool is_short) {
  return NameAt(is_short ? kShortMonths.data() : kMonths.data(), kMonths.size(), month);
}

std::string MonthNameInDate(std::int32_t month) {
  return NameAt(kMonthsInDates.data(), kMonthsInDates.size(), month);
}

std::string DayName(std::int32_t weekday, bool is_short) {
  return NameAt(is_short ? kShortDays.data() : kDays.data(), kDays.size(), weekday);
}

}  // namespace jet
