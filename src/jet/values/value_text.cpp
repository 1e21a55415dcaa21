#include "jet/values/value_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <type_traits>
#include <vector>

#include "foundation/date_parts.h"
#include "foundation/number_text.h"
#include "foundation/text.h"
#include "jet/values/date_numbers.h"

namespace jet {
namespace {

std::string WithComma(std::string text) {
  std::replace(text.begin(), text.end(), '.', ',');
  return text;
}

bool ReadDay(std::string_view text, tmw::DateParts& parts) {
  for (const char separator : {'.', '/', '-'}) {
    const std::vector<std::int32_t> n = NumbersBetween(text, separator);
    if (n.size() != 3) continue;
    const bool is_year_first = text.find(separator) == 4;
    const bool is_short = text.size() - text.rfind(separator) <= 3;
    if (is_year_first) {
      parts.year = n[0];
      parts.month = n[1];
      parts.day = n[2];
      return true;
    }
    // A month that cannot be one is the day.
    const bool is_month_first = n[1] > 12 && n[0] <= 12;
    parts.year = FullYear(n[2], is_short);
    parts.month = n[is_month_first ? 0 : 1];
    parts.day = n[is_month_first ? 1 : 0];
    return true;
  }
  return false;
}

struct TextOf {
  std::optional<std::string> operator()(bool value) const { return value ? "-1" : "0"; }
  std::optional<std::string> operator()(ports::CurrencyValue value) const {
    return WithComma(tmw::CurrencyToText(value.ten_thousandths));
  }
  std::optional<std::string> operator()(float value) const {
    return WithComma(tmw::SingleToText(value));
  }
  std::optional<std::string> operator()(double value) const {
    return WithComma(tmw::DoubleToText(value));
  }
  std::optional<std::string> operator()(ports::DateValue value) const {
    return DateText(value.days);
  }
  std::optional<std::string> operator()(const ports::DecimalValue& value) const {
    return WithComma(value.text);
  }
  std::optional<std::string> operator()(const std::string& value) const { return value; }
  template <typename Other>
  std::optional<std::string> operator()(const Other& value) const {
    if constexpr (std::is_integral_v<Other>) return std::to_string(value);
    return std::nullopt;
  }
};

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// The blank or the no-break space that stands there; empty for anything else.
std::string_view BlankAt(std::string_view text, std::size_t position) {
  const std::string_view rest = text.substr(position);
  for (const std::string_view blank : {std::string_view(" "), std::string_view("\xC2\xA0")}) {
    if (rest.starts_with(blank)) return blank;
  }
  return {};
}

std::int32_t HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool IsDashPlace(std::size_t position) {
  return position == 8 || position == 13 || position == 18 || position == 23;
}

}  // namespace

std::string DateText(double days) {
  const tmw::DateParts parts = tmw::PartsOfDate(days);
  std::array<char, 40> buffer{};
  std::string text;
  const bool has_time = parts.hour != 0 || parts.minute != 0 || parts.second != 0;
  if (std::trunc(days) != 0 || !has_time) {
    static_cast<void>(std::snprintf(buffer.data(), buffer.size(), "%02d.%02d.%04d", parts.day,
                                    parts.month, parts.year));
    text = buffer.data();
  }
  if (has_time) {
    static_cast<void>(std::snprintf(buffer.data(), buffer.size(), "%s%d:%02d:%02d",
                                    text.empty() ? "" : " ", parts.hour, parts.minute,
                                    parts.second));
    text += buffer.data();
  }
  return text;
}

std::optional<double> ParseDateText(std::string_view text) {
  const std::string trimmed = tmw::Trim(text);
  const std::size_t blank = trimmed.find(' ');
  tmw::DateParts parts;
  if (blank == std::string::npos) {
    if (!ReadDay(trimmed, parts) && !ReadTimeOfDay(trimmed, parts)) return std::nullopt;
  } else if (!ReadDay(trimmed.substr(0, blank), parts) ||
             !ReadTimeOfDay(tmw::Trim(trimmed.substr(blank)), parts)) {
    return std::nullopt;
  }
  return tmw::DateFromParts(parts);
}

std::string PlainNumber(std::string_view text) {
  if (text.find_first_not_of("-.0123456789") == std::string_view::npos) return std::string(text);
  std::string number;
  bool is_whole_part = true;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view blank = BlankAt(text, i);
    if (!blank.empty()) {
      const bool is_between_digits = !number.empty() && IsDigit(number.back()) &&
                                     i + blank.size() < text.size() &&
                                     IsDigit(text[i + blank.size()]);
      if (is_whole_part && is_between_digits) {
        i += blank.size() - 1;
        continue;
      }
    }
    is_whole_part = is_whole_part && text[i] != ',' && text[i] != '.';
    number += text[i] == ',' ? '.' : text[i];
  }
  return tmw::Trim(number);
}

std::optional<double> ParseNumberText(std::string_view text) {
  const std::string number = PlainNumber(text);
  std::size_t length = 0;
  const double value = tmw::ReadNumberPrefix(number, &length);
  if (number.empty() || length != number.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<std::string> ValueText(const ports::DatabaseValue& value) {
  return std::visit(TextOf{}, value);
}

std::string GuidText(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "{guid {";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    const auto byte = static_cast<unsigned char>(bytes[i]);
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0x0FU];
  }
  return text + "}}";
}

std::optional<std::string> ParseGuidText(std::string_view text) {
  if (text.starts_with("{guid ") && text.ends_with("}")) text = text.substr(6, text.size() - 7);
  if (text.starts_with("{") && text.ends_with("}")) text = text.substr(1, text.size() - 2);
  if (text.size() != 36) return std::nullopt;
  std::string bytes;
  std::int32_t high = -1;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsDashPlace(i)) {
      if (text[i] != '-') return std::nullopt;
      continue;
    }
    const std::int32_t digit = HexDigit(text[i]);
    if (digit < 0) return std::nullopt;
    if (high < 0) {
      high = digit;
    } else {
      bytes.push_back(static_cast<char>(high * 16 + digit));
      high = -1;
    }
  }
  return bytes;
}

}  // namespace jet
