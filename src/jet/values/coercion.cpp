#include "jet/values/coercion.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

#include "foundation/date_parts.h"
#include "foundation/encodings.h"
#include "foundation/number_text.h"
#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/values/decimal.h"
#include "jet/values/value_text.h"

namespace jet {
namespace {

using ports::DatabaseValue;
using ports::DataType;

constexpr std::int32_t kMostTextUnits = 255;
constexpr std::int32_t kMostBinaryBytes = 510;
constexpr std::int32_t kMostDecimalDigits = 28;
constexpr std::int32_t kScaleShift = 8;
constexpr std::int64_t kTenThousand = 10000;

bool IsNull(const DatabaseValue& value) {
  return std::holds_alternative<ports::NullValue>(value) ||
         std::holds_alternative<ports::EmptyValue>(value);
}

struct NumberOf {
  std::optional<double> operator()(bool value) const { return value ? -1.0 : 0.0; }
  std::optional<double> operator()(ports::CurrencyValue value) const {
    return static_cast<double>(value.ten_thousandths) / kTenThousand;
  }
  std::optional<double> operator()(ports::DateValue value) const { return value.days; }
  std::optional<double> operator()(const ports::DecimalValue& value) const {
    return ParseNumberText(value.text);
  }
  std::optional<double> operator()(const std::string& value) const {
    return ParseNumberText(value);
  }
  template <typename Other>
  std::optional<double> operator()(const Other& value) const {
    if constexpr (std::is_arithmetic_v<Other>) return static_cast<double>(value);
    return std::nullopt;
  }
};

double NumberOrFail(const DatabaseValue& value, std::int32_t mismatch_number) {
  const std::optional<double> number = std::visit(NumberOf{}, value);
  if (!number || !std::isfinite(*number)) Fail(mismatch_number);
  return *number;
}

template <typename Integer>
DatabaseValue ToInteger(const DatabaseValue& value, std::int32_t mismatch_number) {
  if (std::holds_alternative<Integer>(value)) return value;
  const double number = std::nearbyint(NumberOrFail(value, mismatch_number));
  if (number < std::numeric_limits<Integer>::min() || number > std::numeric_limits<Integer>::max())
    Fail(mismatch_number);
  return static_cast<Integer>(number);
}

DatabaseValue ToBoolean(const DatabaseValue& value, std::int32_t mismatch_number) {
  if (std::holds_alternative<bool>(value)) return value;
  if (const auto* const text = std::get_if<std::string>(&value)) {
    const std::string word = tmw::LowerCase(*text);
    if (word == "true" || word == "yes" || word == "on") return true;
    if (word == "false" || word == "no" || word == "off") return false;
  }
  return NumberOrFail(value, mismatch_number) != 0;
}

DatabaseValue ToCurrencyValue(const DatabaseValue& value, std::int32_t mismatch_number) {
  const auto* const text = std::get_if<std::string>(&value);
  if (text != nullptr) {
    // Read digit by digit, because a double would lose some of them.
    if (const std::optional<std::int64_t> exact = tmw::ReadCurrency(PlainNumber(*text)))
      return ports::CurrencyValue{*exact};
  }
  std::int64_t amount = 0;
  if (!ToCurrency(NumberOrFail(value, mismatch_number), amount)) Fail(mismatch_number);
  return ports::CurrencyValue{amount};
}

// Without an exponent.
std::string FixedText(double number) {
  std::array<char, 512> buffer{};
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed);
  return {buffer.data(), end.ptr};
}

DatabaseValue ToDecimal(const DatabaseValue& value, std::int32_t size,
                        std::int32_t mismatch_number) {
  const auto [precision, scale] = DecimalParts(size);
  const std::optional<std::string> text = ValueText(value);
  std::optional<std::string> fitting;
  // Read digit by digit, unless the number comes with an exponent.
  if (text && !std::holds_alternative<ports::DateValue>(value))
    fitting = FitDecimal(PlainNumber(*text), precision, scale);
  if (!fitting)
    fitting = FitDecimal(FixedText(NumberOrFail(value, mismatch_number)), precision, scale);
  if (!fitting) Fail(mismatch_number);
  return ports::DecimalValue{*std::move(fitting)};
}

DatabaseValue ToSingle(const DatabaseValue& value, std::int32_t mismatch_number) {
  const double number = NumberOrFail(value, mismatch_number);
  if (std::fabs(number) > static_cast<double>(std::numeric_limits<float>::max()))
    Fail(mismatch_number);
  return static_cast<float>(number);
}

DatabaseValue ToDate(const DatabaseValue& value, std::int32_t mismatch_number) {
  std::optional<double> days;
  if (const auto* const text = std::get_if<std::string>(&value)) days = ParseDateText(*text);
  if (!days) days = NumberOrFail(value, mismatch_number);
  if (!tmw::IsDateInRange(*days)) Fail(mismatch_number);
  return ports::DateValue{*days};
}

std::size_t Utf16Length(std::string_view text) {
  std::size_t units = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0U) != 0x80) units += byte >= 0xF0 ? 2 : 1;
  }
  return units;
}

DatabaseValue ToText(const DatabaseValue& value, std::int32_t size, std::int32_t mismatch_number) {
  std::optional<std::string> text = ValueText(value);
  if (!text) Fail(mismatch_number);
  if (!FitsText(*text, size)) Fail(kFieldTooSmall);
  return *std::move(text);
}

DatabaseValue ToBinary(const DatabaseValue& value, std::int32_t size,
                       std::int32_t mismatch_number) {
  const auto* const binary = std::get_if<ports::BinaryValue>(&value);
  if (binary == nullptr) Fail(mismatch_number);
  if (size > 0 && binary->bytes.size() > static_cast<std::size_t>(size)) Fail(kFieldTooSmall);
  return value;
}

DatabaseValue ToGuid(const DatabaseValue& value, std::int32_t mismatch_number) {
  std::optional<std::string> bytes;
  if (const auto* const text = std::get_if<std::string>(&value)) bytes = ParseGuidText(*text);
  if (const auto* const binary = std::get_if<ports::BinaryValue>(&value)) bytes = binary->bytes;
  if (!bytes || bytes->size() != 16) Fail(mismatch_number);
  return GuidText(*bytes);
}

}  // namespace

bool FitsText(std::string_view text, std::int32_t size) {
  const auto most = static_cast<std::size_t>(size);
  return size <= 0 || text.size() <= most || Utf16Length(text) <= most;
}

std::int32_t DecimalSize(std::int32_t precision, std::int32_t scale) {
  if (precision < 1 || precision > kMostDecimalDigits || scale < 0 || scale > precision)
    Fail(kInvalidArgument, std::to_string(precision) + ", " + std::to_string(scale));
  return precision | (scale << kScaleShift);
}

std::pair<std::int32_t, std::int32_t> DecimalParts(std::int32_t size) {
  return {size & ((1 << kScaleShift) - 1), size >> kScaleShift};
}

bool ToCurrency(double value, std::int64_t& ten_thousandths) {
  const double scaled = std::nearbyint(value * static_cast<double>(kTenThousand));
  if (!(std::fabs(scaled) < 9.2233720368547748e18)) return false;
  ten_thousandths = static_cast<std::int64_t>(scaled);
  return true;
}

DatabaseValue ConvertTo(const DatabaseValue& value, DataType type, std::int32_t size,
                        std::int32_t mismatch_number) {
  if (IsNull(value)) {
    if (type == DataType::kBoolean) return false;
    return ports::NullValue{};
  }
  switch (type) {
    case DataType::kBoolean:
      return ToBoolean(value, mismatch_number);
    case DataType::kByte:
      return ToInteger<std::uint8_t>(value, mismatch_number);
    case DataType::kInteger:
      return ToInteger<std::int16_t>(value, mismatch_number);
    case DataType::kLong:
      return ToInteger<std::int32_t>(value, mismatch_number);
    case DataType::kCurrency:
      if (std::holds_alternative<ports::CurrencyValue>(value)) return value;
      return ToCurrencyValue(value, mismatch_number);
    case DataType::kSingle:
      return ToSingle(value, mismatch_number);
    case DataType::kDouble:
      return NumberOrFail(value, mismatch_number);
    case DataType::kDate:
      return ToDate(value, mismatch_number);
    case DataType::kText:
    case DataType::kMemo:
      return ToText(value, type == DataType::kText ? size : 0, mismatch_number);
    case DataType::kBinary:
    case DataType::kLongBinary:
      return ToBinary(value, type == DataType::kBinary ? size : 0, mismatch_number);
    case DataType::kGuid:
      return ToGuid(value, mismatch_number);
    case DataType::kDecimal:
      return ToDecimal(value, size, mismatch_number);
    default:
      Fail(kInvalidFieldType, std::to_string(static_cast<std::int32_t>(type)));
  }
}

DatabaseValue ConvertFor(const DatabaseValue& value, const Target& target,
                         std::int32_t mismatch_number) {
  try {
    return ConvertTo(value, target.type, target.size, mismatch_number);
  } catch (const ports::DatabaseError& error) {
    Fail(error.Number, ": поле \"" + target.name + "\"");
  }
}

void CheckAllowed(const DatabaseValue& value, const Target& target) {
  if (IsNull(value)) {
    if (target.in_primary_key) Fail(kNullInIndex, target.name);
    if (target.required) Fail(kRequiredField, target.name);
    return;
  }
  if (target.allow_zero_length) return;
  const auto* const text = std::get_if<std::string>(&value);
  if (text != nullptr && text->empty()) Fail(kZeroLength, target.name);
}

std::int32_t FieldSize(DataType type, std::int32_t asked, const std::string& field) {
  switch (type) {
    case DataType::kBoolean:
    case DataType::kByte:
      return 1;
    case DataType::kInteger:
      return 2;
    case DataType::kLong:
    case DataType::kSingle:
      return 4;
    case DataType::kCurrency:
    case DataType::kDouble:
    case DataType::kDate:
      return 8;
    case DataType::kGuid:
      return 16;
    case DataType::kDecimal:
      return 17;
    case DataType::kMemo:
    case DataType::kLongBinary:
      return 0;
    case DataType::kText:
    case DataType::kBinary: {
      const std::int32_t most = type == DataType::kText ? kMostTextUnits : kMostBinaryBytes;
      if (asked < 0 || asked > most) Fail(kFieldTooSmall, ": " + field);
      return asked == 0 ? most : asked;
    }
    default:
      Fail(kInvalidFieldType, field);
  }
}

}  // namespace jet
