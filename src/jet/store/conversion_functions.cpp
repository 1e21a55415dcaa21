#include "jet/store/conversion_functions.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>

#include "foundation/number_text.h"
#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/values/coercion.h"
#include "jet/values/format.h"
#include "jet/values/value_text.h"

namespace jet {
namespace {

using ports::DatabaseValue;
using ports::DataType;

void Text(FunctionCall& call) {
  if (const std::optional<std::string> text = ValueText(call.Typed(0))) call.PutText(*text);
}

void Number(FunctionCall& call) {
  if (call.IsWhole(0)) {
    call.PutArgument(0);
  } else {
    call.PutNumber(call.Number(0));
  }
}

void Moment(FunctionCall& call) {
  call.PutNumber(call.Moment(0));
}

// CStr, CLng and the like: 3464 for a value that does not convert, 6 for one out of range.
void Convert(FunctionCall& call) {
  if (call.IsNull(1)) Fail(kInvalidUseOfNull);
  const auto type = static_cast<DataType>(call.Integer(0));
  const DatabaseValue value = call.Typed(1);
  switch (type) {
    case DataType::kBoolean:
    case DataType::kDate:
    case DataType::kMemo:
      call.PutStored(ConvertTo(value, type, 0, kTypeMismatch), type);
      return;
    default:
      break;
  }
  ConvertTo(value, DataType::kDouble, 0, kTypeMismatch);
  const DatabaseValue converted = ConvertTo(value, type, 0, kOverflow);
  if (const auto* const amount = std::get_if<ports::CurrencyValue>(&converted)) {
    call.PutNumber(static_cast<double>(amount->ten_thousandths) / 10000);
  } else {
    call.PutStored(converted, type);
  }
}

void IsNumeric(FunctionCall& call) {
  const DatabaseValue value = call.Typed(0);
  const auto* const text = std::get_if<std::string>(&value);
  const bool is_other = call.IsNull(0) || std::holds_alternative<ports::DateValue>(value) ||
                        std::holds_alternative<ports::BinaryValue>(value);
  call.PutBoolean(text != nullptr ? ParseNumberText(*text).has_value() : !is_other);
}

void IsDate(FunctionCall& call) {
  const DatabaseValue value = call.Typed(0);
  const auto* const text = std::get_if<std::string>(&value);
  call.PutBoolean(text != nullptr ? ParseDateText(*text).has_value()
                                  : std::holds_alternative<ports::DateValue>(value));
}

// The number at the beginning of a text. Blanks are skipped, only "." is a decimal separator; &H
// and &O begin hexadecimal and octal numbers.
void LeadingNumber(FunctionCall& call) {
  if (call.IsNull(0)) Fail(kInvalidUseOfNull);
  std::string text;
  for (const char c : call.Text(0)) {
    if (c != ' ' && c != '\t' && c != '\n' && c != '\r') text += c;
  }
  const std::string prefix = text.substr(0, 2);
  const int base = tmw::EqualIgnoringCase(prefix, "&h")   ? 16
                   : tmw::EqualIgnoringCase(prefix, "&o") ? 8
                                                          : 10;
  if (base == 10) {
    call.PutNumber(tmw::ReadNumberPrefix(text));
    return;
  }
  std::uint32_t bits = 0;
  const char* const first = text.data() + prefix.size();
  if (std::from_chars(first, text.data() + text.size(), bits, base).ec ==
      std::errc::result_out_of_range)
    Fail(kOverflow);
  call.PutNumber(static_cast<std::int32_t>(bits));
}

// The number with "." and a leading blank or minus.
void SignedText(FunctionCall& call) {
  DatabaseValue value = call.Typed(0);
  if (std::holds_alternative<ports::DateValue>(value) || call.IsText(0)) value = call.Number(0);
  std::string text = ValueText(value).value_or("");
  std::replace(text.begin(), text.end(), ',', '.');
  call.PutText(text.starts_with('-') ? text : " " + text);
}

// Negative numbers are written as 32 bits.
template <int base>
void InBase(FunctionCall& call) {
  std::array<char, 16> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(),
                                 static_cast<std::uint32_t>(call.Whole(0)), base);
  std::string text(buffer.data(), end.ptr);
  for (char& c : text) {
    if (c >= 'a') c = static_cast<char>(c - 'a' + 'A');
  }
  call.PutText(text);
}

void Format(FunctionCall& call) {
  const std::string_view pattern = call.Count() > 2 ? call.Text(2) : std::string_view();
  const WeekRules rules = MakeWeekRules(call.WholeOr(3, 1), call.WholeOr(4, 1));
  call.PutText(FormatValue(call.Typed(0), pattern, rules));
}

void FormatNumber(FunctionCall& call) {
  constexpr std::int32_t kMostDigits = 99;
  const std::int32_t digits = call.WholeOr(2, -1);
  if (digits < -1 || digits > kMostDigits) Fail(kInvalidCall);
  std::string pattern = "#,##0";
  if (digits != 0)
    pattern += "." + std::string(digits < 0 ? 2U : static_cast<std::size_t>(digits), '0');
  DatabaseValue value = call.Typed(0);
  if (call.IsText(0)) value = call.Number(0);
  call.PutText(FormatValue(value, pattern, {}));
}

constexpr FunctionEntry kFunctions[] = {
    {fn::kConvert, Guarded<Convert>},
    {fn::kFormat, Guarded<Format>},
    {fn::kFormatNumber, Strict<FormatNumber>},
    {fn::kHex, Strict<InBase<16>>},
    {fn::kIsDate, Guarded<IsDate>},
    {fn::kIsNumeric, Guarded<IsNumeric>},
    {fn::kMoment, Strict<Moment>},
    {fn::kNumber, Strict<Number>},
    {fn::kOct, Strict<InBase<8>>},
    {fn::kStr, Strict<SignedText>},
    {fn::kText, Guarded<Text>},
    {fn::kVal, Guarded<LeadingNumber>},
};

}  // namespace

std::span<const FunctionEntry> ConversionFunctions() {
  return kFunctions;
}

}  // namespace jet
