#include "jet/values/date_literal.h"

#include <cstdint>
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

bool ReadTime(const std::string& text, const std::string& half, tmw::DateParts& parts) {
  if (!ReadTimeOfDay(text, parts)) return false;
  if (half.empty()) return true;
  if ((half != "am" && half != "pm") || parts.hour < 1 || parts.hour > 12) return false;
  parts.hour = parts.hour % 12 + (half == "pm" ? 12 : 0);
  return true;
}

}  // namespace

std::optional<double> ParseDateLiteral(std::string_view text) {
  std::vector<std::string> words;
  for (std::string& word : tmw::Split(tmw::LowerCase(text), " ")) {
    if (!word.empty()) words.push_back(std::move(word));
  }
  tmw::DateParts parts;
  std::size_t next = 0;
  const bool has_day = !words.empty() && ReadDay(words[0], parts);
  if (has_day) ++next;
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
