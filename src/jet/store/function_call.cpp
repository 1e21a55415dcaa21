#include "jet/store/function_call.h"

#include <cmath>
#include <exception>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>

#include "foundation/date_parts.h"
#include "jet/errors.h"
#include "jet/values/value_text.h"
#include "jet/values/value_type.h"

namespace jet {
namespace {

using ports::DatabaseValue;
using ports::DataType;

struct ResultPutter {
  FunctionCall& call;
  DataType type;

  void operator()(bool value) const { call.PutBoolean(value); }
  void operator()(ports::CurrencyValue value) const { call.PutInteger(value.ten_thousandths); }
  void operator()(ports::DateValue value) const { call.PutNumber(value.days); }
  void operator()(const ports::DecimalValue& value) const { call.PutText(value.text); }
  void operator()(const std::string& value) const {
    const std::optional<std::string> guid =
        type == DataType::kGuid ? ParseGuidText(value) : std::nullopt;
    if (guid) {
      call.PutBytes(*guid);
    } else {
      call.PutText(value);
    }
  }
  void operator()(const ports::BinaryValue& value) const { call.PutBytes(value.bytes); }
  template <typename Other>
  void operator()(Other value) const {
    if constexpr (std::is_integral_v<Other>) call.PutInteger(value);
    if constexpr (std::is_floating_point_v<Other>) call.PutNumber(value);
  }
};

double CheckedMoment(double days) {
  if (!tmw::IsDateInRange(days)) Fail(kOverflow);
  return days;
}

}  // namespace

FunctionContext& FunctionCall::Context() const {
  return *static_cast<FunctionContext*>(sqlite3_user_data(context_));
}

bool FunctionCall::IsFinite(int index) const {
  return sqlite3_value_type(values_[index]) == SQLITE_FLOAT &&
         std::isfinite(sqlite3_value_double(values_[index]));
}

bool FunctionCall::AnyNull() const {
  for (int i = 0; i < count_; ++i) {
    if (IsNull(i)) return true;
  }
  return false;
}

std::string_view FunctionCall::Text(int index) const {
  const auto* const data = reinterpret_cast<const char*>(sqlite3_value_text(values_[index]));
  return {data == nullptr ? "" : data,
          static_cast<std::size_t>(sqlite3_value_bytes(values_[index]))};
}

std::string_view FunctionCall::Bytes(int index) const {
  const auto* const data = static_cast<const char*>(sqlite3_value_blob(values_[index]));
  return {data == nullptr ? "" : data,
          static_cast<std::size_t>(sqlite3_value_bytes(values_[index]))};
}

double FunctionCall::Number(int index) const {
  switch (sqlite3_value_type(values_[index])) {
    case SQLITE_TEXT: {
      const std::optional<double> number = ParseNumberText(Text(index));
      if (!number) Fail(kTypeMismatch);
      return *number;
    }
    case SQLITE_BLOB:
      Fail(kTypeMismatch);
    default:
      return sqlite3_value_double(values_[index]);
  }
}

std::int32_t FunctionCall::Whole(int index) const {
  const double whole = std::nearbyint(Number(index));
  if (!(whole >= std::numeric_limits<std::int32_t>::min() &&
        whole <= std::numeric_limits<std::int32_t>::max()))
    Fail(kOverflow);
  return static_cast<std::int32_t>(whole);
}

std::int32_t FunctionCall::WholeOr(int index, std::int32_t fallback) const {
  return index < count_ ? Whole(index) : fallback;
}

double FunctionCall::Moment(int index) const {
  if (IsText(index)) {
    if (const std::optional<double> days = ParseDateText(Text(index))) return *days;
  }
  return CheckedMoment(Number(index));
}

DatabaseValue FunctionCall::Typed(int index) const {
  switch (sqlite3_value_type(values_[index])) {
    case SQLITE_NULL:
      return ports::NullValue{};
    case SQLITE_TEXT:
      return std::string(Text(index));
    case SQLITE_BLOB:
      return ports::BinaryValue{std::string(Bytes(index))};
    default:
      break;
  }
  switch (static_cast<ValueType>(Integer(index + 1))) {
    case ValueType::kBoolean:
      return Integer(index) != 0;
    case ValueType::kStoredCurrency:
      return ports::CurrencyValue{Integer(index)};
    case ValueType::kDate:
      return ports::DateValue{CheckedMoment(Number(index))};
    case ValueType::kSingle:
      return static_cast<float>(Number(index));
    default:
      return Number(index);
  }
}

void FunctionCall::PutNumber(double value) {
  if (!std::isfinite(value)) Fail(kOverflow);
  sqlite3_result_double(context_, value);
}

void FunctionCall::PutText(std::string_view text) {
  sqlite3_result_text64(context_, text.data() == nullptr ? "" : text.data(), text.size(),
                        SQLITE_TRANSIENT, SQLITE_UTF8);
}

void FunctionCall::PutBytes(std::string_view bytes) {
  sqlite3_result_blob64(context_, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}

void FunctionCall::PutStored(const DatabaseValue& value, DataType type) {
  std::visit(ResultPutter{*this, type}, value);
}

void RunGuarded(FunctionBody body, bool is_strict, sqlite3_context* context, int count,
                sqlite3_value** values) {
  FunctionCall call(context, count, values);
  if (is_strict && call.AnyNull()) return;
  try {
    body(call);
  } catch (const ports::DatabaseError& error) {
    call.Context().connection.NoteError(error);
    sqlite3_result_error_code(context, SQLITE_ERROR);
  } catch (const std::exception&) {
    sqlite3_result_error_nomem(context);
  }
}

}  // namespace jet
