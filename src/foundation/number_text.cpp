#include "foundation/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <limits>

namespace tmw {
namespace {

std::string GeneralText(double value, int digits) {
  if (value == 0) return "0";
  std::array<char, 64> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                    std::chars_format::general, digits);
  std::replace(buffer.data(), result.ptr, 'e', 'E');
  return {buffer.data(), result.ptr};
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::size_t DigitsFrom(std::string_view text, std::size_t position) {
  while (position < text.size() && IsDigit(text[position]))
    ++position;
  return position;
}

// The length of [sign] digits [. digits] [E [sign] digits] at the text's beginning.
std::size_t NumberLength(std::string_view text) {
  std::size_t start = 0;
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) start = 1;
  std::size_t end = DigitsFrom(text, start);
  std::size_t digits = end - start;
  if (end < text.size() && text[end] == '.') {
    const std::size_t fraction_end = DigitsFrom(text, end + 1);
    digits += fraction_end - end - 1;
    end = fraction_end;
  }
  if (digits == 0) return 0;
  if (end < text.size() && (text[end] == 'E' || text[end] == 'e')) {
    std::size_t exponent = end + 1;
    if (exponent < text.size() && (text[exponent] == '-' || text[exponent] == '+')) ++exponent;
    const std::size_t exponent_end = DigitsFrom(text, exponent);
    if (exponent_end > exponent) end = exponent_end;
  }
  return end;
}

}  // namespace

std::string SingleToText(float value) {
  return GeneralText(static_cast<double>(value), 7);
}

std::string DoubleToText(double value) {
  return GeneralText(value, 15);
}

std::string CurrencyToText(std::int64_t ten_thousandths) {
  const bool is_negative = ten_thousandths < 0;
  auto magnitude = static_cast<std::uint64_t>(ten_thousandths);
  if (is_negative) magnitude = 0 - magnitude;
  std::string text = std::to_string(magnitude / 10000);
  std::uint64_t fraction = magnitude % 10000;
  if (fraction != 0) {
    std::string digits = std::to_string(fraction + 10000).substr(1);
    digits.erase(digits.find_last_not_of('0') + 1);
    text += "." + digits;
  }
  return is_negative ? "-" + text : text;
}

std::optional<std::int64_t> ReadCurrency(std::string_view text) {
  constexpr std::size_t kMostDigits = 15;
  const bool is_negative = text.starts_with("-");
  if (is_negative) text.remove_prefix(1);
  const std::size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  std::string fraction(point == std::string_view::npos ? "" : text.substr(point + 1));
  if (whole.empty() || whole.size() > kMostDigits || fraction.size() > 4) return std::nullopt;
  fraction.resize(4, '0');
  // Nineteen digits fit the unsigned type.
  std::uint64_t amount = 0;
  for (const char c : std::string(whole) + fraction) {
    if (!IsDigit(c)) return std::nullopt;
    amount = amount * 10 + static_cast<std::uint64_t>(c - '0');
  }
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (amount > kMost + (is_negative ? 1 : 0)) return std::nullopt;
  return static_cast<std::int64_t>(is_negative ? 0 - amount : amount);
}

double ReadNumberPrefix(std::string_view text, std::size_t* length) {
  const std::size_t end = NumberLength(text);
  if (length != nullptr) *length = end;
  std::string_view number = text.substr(0, end);
  if (!number.empty() && number.front() == '+') number.remove_prefix(1);
  double value = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  // Out of range: the C routine answers with infinity or zero, as a reader of numbers should.
  if (result.ec == std::errc::result_out_of_range)
    value = std::strtod(std::string(number).c_str(), nullptr);
  return value;
}

std::optional<std::int64_t> ReadWholeNumber(std::string_view text) {
  constexpr std::size_t kMostWholeDigits = 18;
  const bool has_needless_zero = text.size() > 1 && text.front() == '0';
  if (text.empty() || text.size() > kMostWholeDigits || has_needless_zero ||
      text.find_first_not_of("0123456789") != std::string_view::npos) {
    return std::nullopt;
  }
  std::int64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

}  // namespace tmw
