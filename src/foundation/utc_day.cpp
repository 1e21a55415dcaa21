#include "foundation/utc_day.h"

#include <charconv>
#include <chrono>

namespace tmw {

std::optional<std::int64_t> ReadUtcDay(std::string_view text) {
  constexpr std::string_view kShape = "0000-00-00";
  if (text.size() != kShape.size()) return std::nullopt;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_digit = text[i] >= '0' && text[i] <= '9';
    if (kShape[i] == '-' ? text[i] != '-' : !is_digit) return std::nullopt;
  }
  const auto number = [&](std::size_t at, std::size_t length) {
    int value = 0;
    std::from_chars(text.data() + at, text.data() + at + length, value);
    return value;
  };
  const std::chrono::year_month_day day(std::chrono::year(number(0, 4)),
                                        std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                        std::chrono::day(static_cast<unsigned>(number(8, 2))));
  if (!day.ok()) return std::nullopt;
  return std::chrono::sys_days(day).time_since_epoch().count();
}

std::string UtcDayText(std::int64_t day) {
  const std::chrono::year_month_day date{
      std::chrono::sys_days(std::chrono::days(static_cast<int>(day)))};
  const auto padded = [](unsigned value, std::size_t digits) {
    std::string text = std::to_string(value);
    return text.size() < digits ? text.insert(0, digits - text.size(), '0') : text;
  };
  return padded(static_cast<unsigned>(static_cast<int>(date.year())), 4) + "-" +
         padded(static_cast<unsigned>(date.month()), 2) + "-" +
         padded(static_cast<unsigned>(date.day()), 2);
}

std::int64_t UtcDayOf(std::int64_t seconds) {
  return std::chrono::floor<std::chrono::days>(std::chrono::seconds(seconds)).count();
}

}  // namespace tmw
