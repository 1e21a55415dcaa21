#include "foundation/date_parts.h"

#include <chrono>
#include <cmath>

namespace tmw {
namespace {

constexpr std::int32_t kSecondsPerDay = 86400;
constexpr std::chrono::sys_days kDayZero{std::chrono::year{1899} / 12 / 30};

}  // namespace

bool IsDateInRange(double days) {
  // The first day's times of day lie below it.
  return days > kFirstDay - 1 && days < kLastDay + 1;
}

DateParts PartsOfDate(double days) {
  const double whole = std::trunc(days);
  auto day_number = static_cast<std::int32_t>(whole);
  auto seconds = static_cast<std::int32_t>(std::lround(std::fabs(days - whole) * kSecondsPerDay));
  if (seconds == kSecondsPerDay) {
    seconds = 0;
    ++day_number;
  }
  const std::chrono::year_month_day date{kDayZero + std::chrono::days{day_number}};
  DateParts parts;
  parts.year = static_cast<int>(date.year());
  parts.month = static_cast<std::int32_t>(static_cast<unsigned>(date.month()));
  parts.day = static_cast<std::int32_t>(static_cast<unsigned>(date.day()));
  parts.hour = seconds / 3600;
  parts.minute = seconds / 60 % 60;
  parts.second = seconds % 60;
  return parts;
}

std::optional<double> DateFromParts(const DateParts& parts) {
  const auto within = [](std::int32_t value, std::int32_t least, std::int32_t most) {
    return value >= least && value <= most;
  };
  if (!within(parts.year, 100, 9999) || !within(parts.month, 1, 12) || !within(parts.day, 1, 31) ||
      !within(parts.hour, 0, 23) || !within(parts.minute, 0, 59) || !within(parts.second, 0, 59)) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year{parts.year},
                                         std::chrono::month{static_cast<unsigned>(parts.month)},
                                         std::chrono::day{static_cast<unsigned>(parts.day)}};
  if (!date.ok()) return std::nullopt;
  const auto days = (std::chrono::sys_days{date} - kDayZero).count();
  const double time =
      static_cast<double>(parts.hour * 3600 + parts.minute * 60 + parts.second) / kSecondsPerDay;
  return days < 0 ? static_cast<double>(days) - time : static_cast<double>(days) + time;
}

}  // namespace tmw
