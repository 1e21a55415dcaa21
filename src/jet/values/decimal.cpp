#include "jet/values/decimal.h"

#include <algorithm>

namespace jet {
namespace {

struct Parts {
  bool is_negative = false;
  std::string whole;  // without leading zeros
  std::string fraction;
};

bool AreDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<Parts> Split(std::string_view number) {
  Parts parts;
  parts.is_negative = number.starts_with('-');
  if (parts.is_negative || number.starts_with('+')) number.remove_prefix(1);
  const std::size_t point = std::min(number.find('.'), number.size());
  std::string_view whole = number.substr(0, point);
  const std::string_view fraction =
      point < number.size() ? number.substr(point + 1) : std::string_view();
  if (whole.size() + fraction.size() == 0 || !AreDigits(whole) || !AreDigits(fraction))
    return std::nullopt;
  whole.remove_prefix(std::min(whole.find_first_not_of('0'), whole.size()));
  parts.whole = whole;
  parts.fraction = fraction;
  return parts;
}

// Keeps that many places.
void Round(Parts& parts, std::size_t places) {
  if (parts.fraction.size() <= places) return;
  const bool is_up = parts.fraction[places] >= '5';
  parts.fraction.resize(places);
  if (!is_up) return;
  std::string digits = "0" + parts.whole + parts.fraction;
  std::size_t i = digits.size();
  while (digits[--i] == '9')
    digits[i] = '0';
  ++digits[i];
  parts.whole = digits.substr(0, digits.size() - places);
  parts.whole.erase(0, parts.whole.find_first_not_of('0'));
  parts.fraction = digits.substr(digits.size() - places);
}

}  // namespace

std::optional<std::string> FitDecimal(std::string_view number, std::int32_t precision,
                                      std::int32_t scale) {
  std::optional<Parts> parts = Split(number);
  if (!parts) return std::nullopt;
  Round(*parts, static_cast<std::size_t>(scale));
  if (parts->whole.size() + static_cast<std::size_t>(scale) > static_cast<std::size_t>(precision))
    return std::nullopt;
  parts->fraction.erase(parts->fraction.find_last_not_of('0') + 1);
  std::string text = parts->whole.empty() ? "0" : parts->whole;
  if (!parts->fraction.empty()) text += "." + parts->fraction;
  return parts->is_negative && text != "0" ? "-" + text : text;
}

int CompareDecimals(std::string_view a, std::string_view b) {
  const std::optional<Parts> left = Split(a);
  const std::optional<Parts> right = Split(b);
  if (!left || !right) return a.compare(b);
  if (left->is_negative != right->is_negative) return left->is_negative ? -1 : 1;
  int order = 0;
  if (left->whole.size() != right->whole.size()) {
    order = left->whole.size() < right->whole.size() ? -1 : 1;
  } else {
    order = (left->whole + left->fraction).compare(right->whole + right->fraction);
  }
  return left->is_negative ? -order : order;
}

}  // namespace jet
