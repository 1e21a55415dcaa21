#include "jet/values/date_literal.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

#include "foundation/date_parts.h"
#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jet/values/date_numbers.h"

namespace jet {
namespace {

bool ReadDay(const std::string& text, tmw::DateParts& parts) {
  for (const char separator : {'/', '-'}) {
    const std::vector<std::int32_t> n = NumbersBetween(text, separator);
    if (n.size() != 3) continue;
    if (text.find(separator) == 4) {
      parts.year = n[0];
      parts.month = n[1];
      parts.day = n[2];
      return true;
    }
    const bool is_day_first = n[0] > 12;
    parts.month = n[is_day_first ? 1 : 0];
    parts.day = n[is_day_first ? 0 : 1];
    parts.year = FullYear(n[2], text.size() - text.rfind(separator) <= 3);
    return true;
  }
  return false;
}

constexpr std::string_view kMonths[] = {"january",   "february", "march",    "april",
                                        "may",       "june",     "july",     "august",
                                        "september", "october",  "november", "december"};

// 1 to 12 for an English name of a month or its first three letters; 0 for anything else.
std::int32_t MonthOf(const std::string& word) {
  std::int32_t number = 0;
  for (const std::string_view month : kMonths) {
    ++number;
    if (word == month || word == month.substr(0, 3)) return number;
  }
  return 0;
}

std::optional<std::int32_t> Number(const std::string& word) {
  const bool is_number = !word.empty() && word.size() <= 4 &&
                         word.find_first_not_of("0123456789") == std::string::npos;
  if (!is_number) return std::nullopt;
  return std::stoi(word);
}

// Three words: "1 jan 2005" or "jan 1 2005".
bool ReadNamedDay(const std::vector<std::string>& words, tmw::DateParts& parts) {
  if (words.size() < 3) return false;
  const bool is_month_first = MonthOf(words[0]) != 0;
  parts.month = MonthOf(words[is_month_first ? 0 : 1]);
  const std::optional<std::int32_t> day = Number(words[is_month_first ? 1 : 0]);
  const std::optional<std::int32_t> year = Number(words[2]);
  if (parts.month == 0 || !day || !year) return false;
  parts.day = *day;
  parts.year = FullYear(*year, words[2].size() <= 2);
  return true;
}

// Words by blanks; around the name of a month also by "-" and ",".
std::vector<std::string> DateWords(std::string_view text) {
  std::string spaced = tmw::LowerCase(text);
  const bool has_name = std::any_of(
      std::begin(kMonths), std::end(kMonths),
      [&](std::string_view month) { return spaced.find(month.substr(0, 3)) != std::string::npos; });
  for (char& c : spaced) {
    if (has_name && (c == '-' || c == ',')) c = ' ';
  }
  std::vector<std::string> words;
  for (std::string& word : tmw::Split(spaced, " ")) {
    if (!word.empty()) words.push_back(std::move(word));
  }
  return words;
}

bool ReadTime(const std::string& text, const std::string& half, tmw::DateParts& parts) {
  if (!ReadTimeOfDay(text, parts)) return false;
  if (half.empty()) return true;
  if ((half != "am" && half != "pm") || parts.hour < 1 || parts.hour > 12) return false;
  parts.hour = parts.hour % 12 + (half == "pm" ? 12 : 0);
  return true;
}

}  // namespace

std::optional<double> ParseDateLiteral(std::string_view text) {
  const std::vector<std::string> words = DateWords(text);
  tmw::DateParts parts;
  std::size_t next = 0;
  if (ReadNamedDay(words, parts)) {
    next = 3;
  } else if (!words.empty() && ReadDay(words[0], parts)) {
    next = 1;
  }
  const bool has_day = next > 0;
  if (next < words.size()) {
    const std::string half = next + 1 < words.size() ? words[next + 1] : "";
    if (!ReadTime(words[next], half, parts)) return std::nullopt;
    next += half.empty() ? 1 : 2;
  } else if (!has_day) {
    return std::nullopt;
  }
  if (next != words.size()) return std::nullopt;
  return tmw::DateFromParts(parts);
}

}  // namespace jet
