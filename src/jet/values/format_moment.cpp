#include "jet/values/format_moment.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "foundation/date_parts.h"
#include "foundation/encodings.h"
#include "jet/values/value_text.h"

namespace jet {
namespace {

std::string Padded(std::int32_t value, std::size_t length) {
  const std::string digits = std::to_string(value);
  return digits.size() >= length ? digits : std::string(length - digits.size(), '0') + digits;
}

class MomentWriter {
 public:
  MomentWriter(double days, std::string_view pattern, WeekRules rules)
      : days_(days),
        parts_(tmw::PartsOfDate(days)),
        rules_(rules),
        pattern_(pattern),
        lower_(Lower(pattern)) {
    has_halves_ = lower_.find("am/pm") != std::string::npos ||
                  lower_.find("a/p") != std::string::npos ||
                  lower_.find("ampm") != std::string::npos;
  }

  std::string Write() {
    while (at_ < pattern_.size())
      WriteMark();
    return std::move(text_);
  }

 private:
  // ASCII only, so that positions do not change.
  static std::string Lower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
  }

  void WriteMark() {
    const char c = lower_[at_];
    if (c == '"') {
      const std::size_t end = std::min(pattern_.find('"', at_ + 1), pattern_.size());
      text_ += pattern_.substr(at_ + 1, end - at_ - 1);
      at_ = end + 1;
    } else if (c == '\\') {
      if (at_ + 1 < pattern_.size()) text_ += pattern_[at_ + 1];
      at_ += 2;
    } else if (c == 'a' && WriteHalf()) {
      after_hour_ = false;
    } else if (std::string_view("dmyhnswqct").find(c) != std::string_view::npos) {
      std::size_t end = at_;
      while (end < lower_.size() && lower_[end] == c)
        ++end;
      WritePart(c, end - at_);
      at_ = end;
    } else {
      // "/" is the date separator, which is "." under Russian settings.
      text_ += c == '/' ? '.' : pattern_[at_];
      ++at_;
    }
  }

  bool WriteHalf() {
    const bool is_morning = parts_.hour < 12;
    const std::string_view rest = std::string_view(lower_).substr(at_);
    if (rest.starts_with("am/pm")) {
      text_ += pattern_.substr(is_morning ? at_ : at_ + 3, 2);
      at_ += 5;
    } else if (rest.starts_with("a/p")) {
      text_ += pattern_[is_morning ? at_ : at_ + 2];
      at_ += 3;
    } else if (rest.starts_with("ampm")) {
      at_ += 4;  // Russian settings have no AM and PM designators
    } else {
      return false;
    }
    return true;
  }

  void WritePart(char mark, std::size_t length) {
    const bool is_minute = mark == 'n' || (mark == 'm' && after_hour_ && length <= 2);
    after_hour_ = mark == 'h';
    if (is_minute) {
      text_ += Padded(parts_.minute, length);
      return;
    }
    switch (mark) {
      case 'd':
        WriteDay(length);
        break;
      case 'm':
        text_ += length <= 2 ? Padded(parts_.month, length) : MonthName(parts_.month, length == 3);
        break;
      case 'y':
        WriteYear(length);
        break;
      case 'h':
        text_ += Padded(has_halves_ ? (parts_.hour + 11) % 12 + 1 : parts_.hour, length);
        break;
      case 's':
        text_ += Padded(parts_.second, length);
        break;
      case 'w':
        text_ += std::to_string(
            PartOf(days_, length == 1 ? Interval::kWeekday : Interval::kWeek, rules_));
        break;
      case 'q':
        text_ += std::to_string(PartOf(days_, Interval::kQuarter, rules_));
        break;
      case 'c':
        text_ += DateText(days_);
        break;
      default:
        WriteTime(length);
        break;
    }
  }

  void WriteDay(std::size_t length) {
    const std::int32_t weekday = PartOf(days_, Interval::kWeekday, {});
    if (length <= 2) {
      text_ += Padded(parts_.day, length);
    } else if (length <= 4) {
      text_ += DayName(weekday, length == 3);
    } else if (length == 5) {
      text_ += FormatMoment(days_, "dd\\.mm\\.yyyy", rules_);
    } else {
      text_ += std::to_string(parts_.day) + " " + MonthNameInDate(parts_.month) + " " +
               Padded(parts_.year, 4) + " г.";
    }
  }

  void WriteYear(std::size_t length) {
    if (length == 1) {
      text_ += std::to_string(PartOf(days_, Interval::kDayOfYear, rules_));
    } else {
      text_ += length == 2 ? Padded(parts_.year % 100, 2) : Padded(parts_.year, 4);
    }
  }

  void WriteTime(std::size_t length) {
    if (length == 5) {
      text_ += FormatMoment(days_, "h:nn:ss", rules_);
    } else {
      text_ += std::string(length, 't');
    }
  }

  double days_;
  tmw::DateParts parts_;
  WeekRules rules_;
  std::string_view pattern_;
  std::string lower_;
  std::size_t at_ = 0;
  std::string text_;
  bool has_halves_ = false;
  bool after_hour_ = false;
};

}  // namespace

std::string FormatMoment(double days, std::string_view pattern, WeekRules rules) {
  return MomentWriter(days, pattern, rules).Write();
}

}  // namespace jet
