#include "database/db_string.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "foundation/date_parts.h"
#include "foundation/error_handling.h"
#include "foundation/number_text.h"
#include "foundation/text.h"

namespace tmw {
namespace {

constexpr const char* kModule = "miDBExport";
constexpr std::int32_t kByteArrayCode = 0x2011;
constexpr std::string_view kNoBreakSpace = "\u00A0";

struct TypeToken {
  ports::DataType type;
  std::string_view token;
};

using ports::DataType;

constexpr std::array<TypeToken, 21> kTypeTokens = {{
    {DataType::kBoolean, "Bool"},        {DataType::kByte, "Byte"},
    {DataType::kInteger, "Int"},         {DataType::kLong, "Long"},
    {DataType::kCurrency, "Curr"},       {DataType::kSingle, "Single"},
    {DataType::kDouble, "Dbl"},          {DataType::kDate, "Date"},
    {DataType::kBinary, "Bin"},          {DataType::kText, "Text"},
    {DataType::kLongBinary, "LongBin"},  {DataType::kMemo, "Memo"},
    {DataType::kGuid, "Guid"},           {DataType::kBigInt, "BigInt"},
    {DataType::kVarBinary, "VarBin"},    {DataType::kChar, "Char"},
    {DataType::kNumeric, "Num"},         {DataType::kDecimal, "Dec"},
    {DataType::kFloat, "Float"},         {DataType::kTime, "Time"},
    {DataType::kTimeStamp, "TimeStamp"},
}};

// A CR LF pair is one escape; the rest are single characters.
std::string EscapedText(std::string_view text) {
  std::string result = "S";
  result.reserve(text.size() + 1);
  for (std::size_t i = 0; i < text.size(); ++i) {
    switch (text[i]) {
      case '^':
        result += "^1";
        break;
      case '|':
        result += "^2";
        break;
      case '\r':
        if (text.substr(i, 2) == kCrLf) {
          result += "^3";
          ++i;
        } else {
          result += "^4";
        }
        break;
      case '\n':
        result += "^5";
        break;
      case '\t':
        result += "^6";
        break;
      default:
        if (text[i] == kNoBreakSpace[0] && text.substr(i, 2) == kNoBreakSpace) {
          result += "^7";
          ++i;
        } else {
          result += text[i];
        }
    }
  }
  return result;
}

// A "^" that does not begin an escape stands for itself.
std::string UnescapedText(std::string_view text) {
  constexpr std::array<std::string_view, 7> kMeanings = {"^",  "|",  "\r\n",       "\r",
                                                         "\n", "\t", kNoBreakSpace};
  std::string result;
  for (;;) {
    const std::size_t mark = text.find('^');
    result += text.substr(0, mark);
    if (mark == std::string_view::npos) return result;
    const char next = mark + 1 < text.size() ? text[mark + 1] : '\0';
    const bool is_escape = next >= '1' && next <= '7';
    result += is_escape ? kMeanings[static_cast<std::size_t>(next - '1')] : "^";
    text.remove_prefix(mark + (is_escape ? 2 : 1));
  }
}

void PutDigits(std::string& text, std::int32_t value, int count) {
  std::int32_t divisor = count == 4 ? 1000 : 10;
  for (; divisor > 0; divisor /= 10)
    text += static_cast<char>('0' + value / divisor % 10);
}

std::string DateText(double days) {
  if (days == 0) return "D0";
  if (days == std::trunc(days))
    return "d" + std::to_string(static_cast<std::int64_t>(days) - kDay2001);
  if (!IsDateInRange(days)) return "? (0x7)";
  const DateParts parts = PartsOfDate(days);
  std::string text = "D";
  PutDigits(text, parts.year, 4);
  PutDigits(text, parts.month, 2);
  PutDigits(text, parts.day, 2);
  PutDigits(text, parts.hour, 2);
  PutDigits(text, parts.minute, 2);
  PutDigits(text, parts.second, 2);
  return text;
}

std::string UnreadableText(std::int32_t type_code) {
  return "? (0x" + ToHex(type_code) + ")";
}

struct TextOf {
  std::string operator()(ports::EmptyValue) const { return "E"; }
  std::string operator()(ports::NullValue) const { return {}; }
  std::string operator()(bool value) const { return value ? "T" : "F"; }
  std::string operator()(std::uint8_t value) const { return std::to_string(value); }
  std::string operator()(std::int16_t value) const { return std::to_string(value); }
  std::string operator()(std::int32_t value) const { return std::to_string(value); }
  std::string operator()(ports::CurrencyValue value) const {
    return CurrencyToText(value.ten_thousandths);
  }
  std::string operator()(float value) const { return SingleToText(value); }
  std::string operator()(double value) const { return DoubleToText(value); }
  std::string operator()(ports::DateValue value) const { return DateText(value.days); }
  std::string operator()(const ports::DecimalValue& value) const { return value.text; }
  std::string operator()(const std::string& value) const { return EscapedText(value); }
  std::string operator()(const ports::BinaryValue&) const { return UnreadableText(kByteArrayCode); }
  std::string operator()(ports::OtherValue value) const { return UnreadableText(value.type_code); }
};

[[noreturn]] void RaiseUnrecognised(std::string_view text) {
  RaiseProgramError("Unrecognizing value in DBString: [" + std::string(text) + "]");
}

ports::DatabaseValue WholeDay(std::string_view text) {
  std::size_t length = 0;
  const double days = ReadNumberPrefix(text.substr(1), &length);
  if (length == 0 || length + 1 != text.size() || !IsDateInRange(days + kDay2001))
    RaiseUnrecognised(text);
  return ports::DateValue{days + kDay2001};
}

ports::DatabaseValue Moment(std::string_view digits) {
  if (digits == "0") return ports::DateValue{0};
  const auto part = [&](std::size_t from, std::size_t count) {
    std::int32_t value = 0;
    for (const char c : digits.substr(from, count))
      value = c >= '0' && c <= '9' && value >= 0 ? value * 10 + (c - '0') : -1;
    return value;
  };
  std::optional<double> days;
  if (digits.size() == 14) {
    days =
        DateFromParts({part(0, 4), part(4, 2), part(6, 2), part(8, 2), part(10, 2), part(12, 2)});
  }
  if (!days) RaiseProgramError("Invalid date in DBString: [D" + std::string(digits) + "]");
  return ports::DateValue{*days};
}

}  // namespace

std::string FieldTypeToStr(ports::DataType type) try {
  for (const TypeToken& entry : kTypeTokens) {
    if (entry.type == type) return std::string(entry.token);
  }
  return "U" + std::to_string(static_cast<std::int32_t>(type));
} catch (...) {
  ReRaiseError(kModule, "FieldTypeToStr");
}

std::optional<ports::DataType> FieldTypeFromStr(std::string_view token) {
  for (const TypeToken& entry : kTypeTokens) {
    if (entry.token == token) return entry.type;
  }
  return std::nullopt;
}

std::string VariantToDBString(const ports::DatabaseValue& value) try {
  return std::visit(TextOf{}, value);
} catch (...) {
  ReRaiseError(kModule, "VariantToDBString");
}

ports::DatabaseValue DBStringToVariant(std::string_view text) try {
  if (text.empty()) return ports::NullValue{};
  switch (text.front()) {
    case 'E':
      return ports::EmptyValue{};
    case 'S':
      return UnescapedText(text.substr(1));
    case 'd':
      return WholeDay(text);
    case 'D':
      return Moment(text.substr(1));
    case 'T':
      return true;
    case 'F':
      return false;
    default:
      if (text.front() != '-' && (text.front() < '0' || text.front() > '9'))
        RaiseUnrecognised(text);
      return ReadNumberPrefix(text);
  }
} catch (...) {
  ReRaiseError(kModule, "DBStringToVariant");
}

}  // namespace tmw
