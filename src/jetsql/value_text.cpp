#include "jetsql/value_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "foundation/date_parts.h"
#include "foundation/number_text.h"
#include "tools/json.h"

namespace jetsql {
namespace {

using ports::DatabaseValue;

template <typename Number>
std::string Shortest(Number number) {
  std::array<char, 64> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  return {buffer.data(), end.ptr};
}

std::string Hex(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "0x";
  text.reserve(2 + bytes.size() * 2);
  for (const char byte : bytes) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4U];
    text += kDigits[static_cast<unsigned char>(byte) & 0x0FU];
  }
  return text;
}

// At least two places, as amounts of money have.
std::string AmountText(std::int64_t ten_thousandths) {
  std::string text = tmw::CurrencyToText(ten_thousandths);
  const std::size_t point = text.find('.');
  if (point == std::string::npos) return text + ".00";
  if (text.size() - point == 2) text += '0';
  return text;
}

std::string DayText(const tmw::DateParts& parts) {
  std::array<char, 40> buffer{};
  static_cast<void>(std::snprintf(buffer.data(), buffer.size(), "%04d-%02d-%02d", parts.year,
                                  parts.month, parts.day));
  return buffer.data();
}

std::string TimeText(const tmw::DateParts& parts) {
  std::array<char, 40> buffer{};
  static_cast<void>(std::snprintf(buffer.data(), buffer.size(), "%02d:%02d:%02d", parts.hour,
                                  parts.minute, parts.second));
  return buffer.data();
}

std::string MomentText(double days) {
  if (!tmw::IsDateInRange(days)) return Shortest(days);
  const tmw::DateParts parts = tmw::PartsOfDate(days);
  const bool has_time = parts.hour != 0 || parts.minute != 0 || parts.second != 0;
  return has_time ? DayText(parts) + " " + TimeText(parts) : DayText(parts);
}

// "{guid {…}}" without what surrounds it.
std::string BareGuid(const std::string& text) {
  constexpr std::string_view kBegin = "{guid ";
  if (!text.starts_with(kBegin) || !text.ends_with("}}")) return text;
  return text.substr(kBegin.size(), text.size() - kBegin.size() - 1);
}

struct PlainVisitor {
  std::string operator()(ports::EmptyValue) const { return "NULL"; }
  std::string operator()(ports::NullValue) const { return "NULL"; }
  std::string operator()(bool value) const { return value ? "yes" : "no"; }
  std::string operator()(ports::CurrencyValue value) const {
    return AmountText(value.ten_thousandths);
  }
  std::string operator()(ports::DateValue value) const { return MomentText(value.days); }
  std::string operator()(const ports::DecimalValue& value) const { return value.text; }
  std::string operator()(const std::string& value) const { return BareGuid(value); }
  std::string operator()(const ports::BinaryValue& value) const { return Hex(value.bytes); }
  std::string operator()(ports::OtherValue value) const {
    return "? (" + std::to_string(value.type_code) + ")";
  }
  template <typename Number>
  std::string operator()(Number value) const {
    if constexpr (std::is_integral_v<Number>) return std::to_string(value);
    if constexpr (std::is_floating_point_v<Number>) return Shortest(value);
  }
};

// Texts in '…'. U+0000, which a literal cannot hold, joins two halves with a number of such marks
// that differs by one at most: the depth of an expression is limited.
std::string TextLiteral(std::string_view text) {
  const auto marks = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\0'));
  if (marks == 0) {
    std::string literal = "'";
    for (const char c : text) {
      literal += c;
      if (c == '\'') literal += c;
    }
    return literal + "'";
  }
  std::size_t middle = text.find('\0');
  for (std::size_t i = 0; i < marks / 2; ++i)
    middle = text.find('\0', middle + 1);
  const std::string joined =
      TextLiteral(text.substr(0, middle)) + " & Chr(0) & " + TextLiteral(text.substr(middle + 1));
  return "(" + joined + ")";
}

std::string MomentLiteral(double days) {
  if (tmw::IsDateInRange(days)) {
    const tmw::DateParts parts = tmw::PartsOfDate(days);
    const bool has_time = parts.hour != 0 || parts.minute != 0 || parts.second != 0;
    const auto back = tmw::DateFromParts(parts);
    // Fractions of seconds, and zero with a sign, are kept by the number.
    if (back == days && !(days == 0 && has_time))
      return "#" + DayText(parts) + (has_time ? " " + TimeText(parts) : "") + "#";
  }
  return "CDate(" + Shortest(days) + ")";
}

struct LiteralVisitor {
  std::string operator()(ports::EmptyValue) const { return "Null"; }
  std::string operator()(ports::NullValue) const { return "Null"; }
  std::string operator()(bool value) const { return value ? "True" : "False"; }
  std::string operator()(ports::CurrencyValue value) const {
    constexpr std::int64_t kExact = 100'000'000'000'000;  // of ten-thousandths as a double
    const std::string text = tmw::CurrencyToText(value.ten_thousandths);
    const bool is_exact = value.ten_thousandths < kExact && value.ten_thousandths > -kExact;
    return is_exact ? text : "'" + text + "'";
  }
  std::string operator()(ports::DateValue value) const { return MomentLiteral(value.days); }
  std::string operator()(const ports::DecimalValue& value) const { return "'" + value.text + "'"; }
  std::string operator()(const std::string& value) const { return TextLiteral(value); }
  std::string operator()(const ports::BinaryValue& value) const { return Hex(value.bytes); }
  std::string operator()(ports::OtherValue) const { return "Null"; }
  template <typename Number>
  std::string operator()(Number value) const {
    if constexpr (std::is_integral_v<Number>) return std::to_string(value);
    if constexpr (std::is_floating_point_v<Number>) return Shortest(value);
  }
};

struct JsonVisitor {
  std::string operator()(ports::EmptyValue) const { return "null"; }
  std::string operator()(ports::NullValue) const { return "null"; }
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(ports::CurrencyValue value) const {
    return tmw::CurrencyToText(value.ten_thousandths);
  }
  std::string operator()(const ports::DecimalValue& value) const { return value.text; }
  template <typename Other>
  std::string operator()(const Other& value) const {
    if constexpr (std::is_arithmetic_v<Other>) return PlainVisitor{}(value);
    return JsonString(PlainVisitor{}(value));
  }
};

}  // namespace

std::string PlainText(const DatabaseValue& value) {
  return std::visit(PlainVisitor{}, value);
}

std::string JsonText(const DatabaseValue& value) {
  return std::visit(JsonVisitor{}, value);
}

std::string JsonString(const std::string& text) {
  return tools::Json(text).dump(-1, ' ', false, tools::Json::error_handler_t::replace);
}

std::string SqlLiteral(const DatabaseValue& value) {
  return std::visit(LiteralVisitor{}, value);
}

}  // namespace jetsql
