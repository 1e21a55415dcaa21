#include "jet/values/format_number.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "jet/errors.h"

// Works on decimal digits, so that a half as the user sees it is rounded as a half.
namespace jet {
namespace {

constexpr const char* kThousands = "\u00A0";
constexpr std::size_t kMostPlaces = 400;

// Digits without the decimal point, and the number of digits before it.
struct Decimal {
  std::string digits;
  std::int32_t point = 0;

  bool IsZero() const { return digits.find_first_not_of('0') == std::string::npos; }
};

Decimal ReadDecimal(std::string_view text) {
  Decimal decimal;
  const std::size_t point = std::min(text.find('.'), text.size());
  decimal.point = static_cast<std::int32_t>(point);
  for (const char c : text) {
    if (c != '.') decimal.digits += c;
  }
  const std::size_t zeros = std::min(decimal.digits.find_first_not_of('0'), decimal.digits.size());
  decimal.digits.erase(0, zeros);
  decimal.point -= static_cast<std::int32_t>(zeros);
  return decimal;
}

// Rounds to a number of digits after the point, halves away from zero.
void RoundTo(Decimal& decimal, std::int32_t places) {
  const std::int32_t kept = decimal.point + places;
  if (kept >= static_cast<std::int32_t>(decimal.digits.size())) return;
  const bool is_up = kept >= 0 && decimal.digits[static_cast<std::size_t>(kept)] >= '5';
  decimal.digits.resize(static_cast<std::size_t>(std::max(kept, 0)));
  if (!is_up) return;
  std::size_t i = decimal.digits.size();
  while (i > 0 && decimal.digits[i - 1] == '9')
    decimal.digits[--i] = '0';
  if (i > 0) {
    ++decimal.digits[i - 1];
  } else {
    decimal.digits.insert(decimal.digits.begin(), '1');
    ++decimal.point;
  }
}

char DigitAt(const Decimal& decimal, std::int32_t index) {
  const bool is_there = index >= 0 && index < static_cast<std::int32_t>(decimal.digits.size());
  return is_there ? decimal.digits[static_cast<std::size_t>(index)] : '0';
}

struct Mark {
  enum Kind { kLiteral, kDigit, kOptionalDigit, kPoint, kPercent, kExponent };
  Kind kind;
  std::string text;
};

// One parsed section of a pattern.
struct Section {
  std::vector<Mark> marks;
  std::int32_t whole_places = 0;  // digit placeholders before the point
  std::int32_t fraction_places = 0;
  bool has_point = false;
  bool is_grouped = false;
  std::int32_t shift = 0;  // of the point, from % and trailing commas
  std::size_t exponent_places = 0;
  bool has_exponent = false;
};

class SectionReader {
 public:
  explicit SectionReader(std::string_view text) : text_(text) {}

  Section Read() {
    while (at_ < text_.size())
      ReadMark(text_[at_]);
    if (!section_.has_point) EndWholePlaces();
    return std::move(section_);
  }

 private:
  void ReadMark(char c) {
    switch (c) {
      case '0':
      case '#':
        ReadDigit(c);
        break;
      case '.':
        if (!section_.has_point) EndWholePlaces();
        section_.has_point = true;
        Put(Mark::kPoint, ".");
        break;
      case ',':
        ++commas_;
        break;
      case '%':
        section_.shift += 2;
        Put(Mark::kPercent, "%");
        break;
      case 'E':
      case 'e':
        if (!ReadExponent()) Put(Mark::kLiteral, std::string(1, c));
        break;
      case '"':
        ReadQuoted();
        return;
      case '\\':
        if (at_ + 1 < text_.size()) ++at_;
        Put(Mark::kLiteral, std::string(1, text_[at_]));
        break;
      default:
        Put(Mark::kLiteral, std::string(1, c));
        break;
    }
    ++at_;
  }

  void ReadDigit(char c) {
    if (section_.has_exponent) return;
    // A comma between placeholders groups thousands, each one after the last divides by 1000.
    if (!section_.has_point && section_.whole_places > 0 && commas_ > 0) section_.is_grouped = true;
    commas_ = 0;
    ++(section_.has_point ? section_.fraction_places : section_.whole_places);
    Put(c == '0' ? Mark::kDigit : Mark::kOptionalDigit, {});
  }

  void EndWholePlaces() {
    if (section_.whole_places > 0) section_.shift -= 3 * commas_;
    commas_ = 0;
  }

  bool ReadExponent() {
    std::size_t end = at_ + 1;
    if (section_.has_exponent || end >= text_.size() || (text_[end] != '+' && text_[end] != '-'))
      return false;
    const bool has_plus = text_[end] == '+';
    while (end + 1 < text_.size() && (text_[end + 1] == '0' || text_[end + 1] == '#'))
      ++end;
    section_.exponent_places = end - at_ - 1;
    if (section_.exponent_places == 0) return false;
    section_.has_exponent = true;
    Put(Mark::kExponent, std::string(1, text_[at_]) + (has_plus ? "+" : ""));
    at_ = end;
    return true;
  }

  void ReadQuoted() {
    const std::size_t end = std::min(text_.find('"', at_ + 1), text_.size());
    Put(Mark::kLiteral, std::string(text_.substr(at_ + 1, end - at_ - 1)));
    at_ = end + 1;
  }

  void Put(Mark::Kind kind, std::string text) {
    if (section_.marks.size() >= kMostPlaces) Fail(kInvalidCall);
    section_.marks.push_back({kind, std::move(text)});
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::int32_t commas_ = 0;
  Section section_;
};

class SectionWriter {
 public:
  SectionWriter(const Section& section, Decimal decimal, std::int32_t exponent)
      : section_(section), decimal_(std::move(decimal)), exponent_(exponent) {}

  std::string Write() {
    std::int32_t place = section_.whole_places;
    bool is_behind_point = false;
    for (const Mark& mark : section_.marks) {
      switch (mark.kind) {
        case Mark::kDigit:
        case Mark::kOptionalDigit:
          if (is_behind_point) {
            PutFraction(mark.kind == Mark::kDigit);
          } else {
            PutWhole(place--, mark.kind == Mark::kDigit);
          }
          break;
        case Mark::kPoint:
          // Whole digits are shown even if there is no placeholder for them.
          if (section_.whole_places == 0 && decimal_.point > 0) PutWhole(0, false);
          if (!is_behind_point) text_ += ',';
          is_behind_point = true;
          break;
        case Mark::kExponent:
          PutExponent(mark.text);
          break;
        default:
          text_ += mark.text;
          break;
      }
    }
    return std::move(text_);
  }

 private:
  // Places count from the point to the left; the first placeholder shows all digits to its left.
  void PutWhole(std::int32_t place, bool is_shown_always) {
    std::int32_t from = place;
    if (place == section_.whole_places) from = std::max(from, decimal_.point);
    const std::int32_t last = std::max(place, 1);
    for (; from >= last; --from) {
      if (from > decimal_.point && !is_shown_always && !has_begun_) continue;
      has_begun_ = true;
      text_ += DigitAt(decimal_, decimal_.point - from);
      if (section_.is_grouped && from > 1 && from % 3 == 1) text_ += kThousands;
    }
  }

  void PutFraction(bool is_shown_always) {
    const std::int32_t index = decimal_.point + fraction_++;
    const auto last = decimal_.digits.find_last_not_of('0');
    const bool is_there = last != std::string::npos && index <= static_cast<std::int32_t>(last);
    if (is_shown_always || is_there) text_ += DigitAt(decimal_, index);
  }

  void PutExponent(const std::string& mark) {
    text_ += mark[0];
    if (exponent_ < 0) {
      text_ += '-';
    } else if (mark.size() > 1) {
      text_ += '+';
    }
    const std::string digits = std::to_string(std::abs(exponent_));
    text_ +=
        std::string(section_.exponent_places - std::min(section_.exponent_places, digits.size()),
                    '0') +
        digits;
  }

  const Section& section_;
  Decimal decimal_;
  std::int32_t exponent_;
  std::string text_;
  std::int32_t fraction_ = 0;
  bool has_begun_ = false;
};

}  // namespace

std::string FormatDigits(std::string_view digits, std::string_view section) {
  const Section parsed = SectionReader(section).Read();
  Decimal decimal = ReadDecimal(digits);
  std::int32_t exponent = 0;
  if (parsed.has_exponent && !decimal.IsZero()) {
    exponent = decimal.point - std::max(parsed.whole_places, 1);
    decimal.point -= exponent;
    const std::int32_t point = decimal.point;
    RoundTo(decimal, parsed.fraction_places);
    exponent += decimal.point - point;
    decimal.point = point;
  } else {
    decimal.point += parsed.shift;
    RoundTo(decimal, parsed.fraction_places);
  }
  return SectionWriter(parsed, std::move(decimal), exponent).Write();
}

}  // namespace jet
