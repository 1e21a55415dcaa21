#include "jet/values/date_numbers.h"

#include <string>

#include "foundation/text.h"

namespace jet {

std::vector<std::int32_t> NumbersBetween(std::string_view text, char separator) {
  std::vector<std::int32_t> numbers;
  for (const std::string& piece : tmw::Split(text, std::string(1, separator))) {
    if (piece.empty() || piece.size() > 4) return {};
    std::int32_t number = 0;
    for (const char c : piece) {
      if (c < '0' || c > '9') return {};
      number = number * 10 + (c - '0');
    }
    numbers.push_back(number);
  }
  return numbers;
}

bool ReadTimeOfDay(std::string_view text, tmw::DateParts& parts) {
  const std::vector<std::int32_t> n = NumbersBetween(text, ':');
  if (n.size() != 2 && n.size() != 3) return false;
  parts.hour = n[0];
  parts.minute = n[1];
  parts.second = n.size() == 3 ? n[2] : 0;
  return true;
}

std::int32_t FullYear(std::int32_t year, bool is_short) {
  if (!is_short) return year;
  return year < 30 ? 2000 + year : 1900 + year;
}

}  // namespace jet
