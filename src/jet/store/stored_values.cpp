#include "jet/store/stored_values.h"

#include <sqlite3.h>

#include <cmath>
#include <limits>
#include <type_traits>

#include "foundation/date_parts.h"
#include "jet/errors.h"
#include "jet/values/coercion.h"
#include "jet/values/value_text.h"

namespace jet {
namespace {

using ports::DatabaseValue;
using ports::DataType;

struct Binder {
  Statement& statement;
  int parameter;

  void operator()(bool value) const { statement.Bind(parameter, std::int64_t{value ? -1 : 0}); }
  void operator()(ports::CurrencyValue value) const {
    statement.Bind(parameter, value.ten_thousandths);
  }
  void operator()(ports::DateValue value) const { statement.Bind(parameter, value.days); }
  void operator()(const ports::DecimalValue& value) const { (*this)(value.text); }
  void operator()(const std::string& value) const {
    statement.Bind(parameter, std::string_view(value));
  }
  void operator()(const ports::BinaryValue& value) const {
    statement.BindBytes(parameter, value.bytes);
  }
  void operator()(ports::OtherValue) const { Fail(kConversion); }
  template <typename Other>
  void operator()(Other value) const {
    if constexpr (std::is_integral_v<Other>) {
      statement.Bind(parameter, std::int64_t{value});
    } else if constexpr (std::is_floating_point_v<Other>) {
      statement.Bind(parameter, double{value});
    } else {
      statement.BindNull(parameter);
    }
  }
};

double FiniteNumber(double value) {
  if (!std::isfinite(value)) Fail(kOverflow);
  return value;
}

DatabaseValue WholeNumber(std::int64_t value) {
  if (value < std::numeric_limits<std::int32_t>::min() ||
      value > std::numeric_limits<std::int32_t>::max())
    return static_cast<double>(value);
  return static_cast<std::int32_t>(value);
}

DatabaseValue ReadByClass(const Statement& statement, int column) {
  switch (statement.StorageClass(column)) {
    case SQLITE_INTEGER:
      return WholeNumber(statement.Integer(column));
    case SQLITE_FLOAT:
      return FiniteNumber(statement.Real(column));
    case SQLITE_TEXT:
      return std::string(statement.Text(column));
    default:
      return ports::BinaryValue{std::string(statement.Bytes(column))};
  }
}

}  // namespace

void BindValue(Statement& statement, int parameter, const DatabaseValue& value, DataType type) {
  if (type == DataType::kGuid) {
    const auto* const text = std::get_if<std::string>(&value);
    const auto bytes = text == nullptr ? std::nullopt : ParseGuidText(*text);
    if (bytes) {
      // The bytes are copied, because they do not outlive this call.
      sqlite3_bind_blob(statement.Handle(), parameter, bytes->data(),
                        static_cast<int>(bytes->size()), SQLITE_TRANSIENT);
      return;
    }
  }
  std::visit(Binder{statement, parameter}, value);
}

DatabaseValue ReadStored(const Statement& statement, int column, DataType type) {
  if (statement.IsNull(column)) {
    if (type == DataType::kBoolean) return false;
    return ports::NullValue{};
  }
  switch (type) {
    case DataType::kBoolean:
      return statement.Integer(column) != 0;
    case DataType::kByte:
      return static_cast<std::uint8_t>(statement.Integer(column));
    case DataType::kInteger:
      return static_cast<std::int16_t>(statement.Integer(column));
    case DataType::kLong:
      return static_cast<std::int32_t>(statement.Integer(column));
    case DataType::kCurrency:
      return ports::CurrencyValue{statement.Integer(column)};
    case DataType::kSingle:
      return static_cast<float>(statement.Real(column));
    case DataType::kDouble:
      return statement.Real(column);
    case DataType::kDate:
      return ports::DateValue{statement.Real(column)};
    case DataType::kText:
    case DataType::kMemo:
      return std::string(statement.Text(column));
    case DataType::kGuid:
      return GuidText(statement.Bytes(column));
    case DataType::kDecimal:
      return ports::DecimalValue{std::string(statement.Text(column))};
    default:
      return ports::BinaryValue{std::string(statement.Bytes(column))};
  }
}

DatabaseValue ReadComputed(const Statement& statement, int column, ValueType type) {
  if (statement.IsNull(column)) return ports::NullValue{};
  switch (type) {
    case ValueType::kBoolean:
      return statement.Integer(column) != 0;
    case ValueType::kNumber:
      return FiniteNumber(statement.Real(column));
    case ValueType::kSingle:
      return static_cast<float>(FiniteNumber(statement.Real(column)));
    case ValueType::kCurrency: {
      std::int64_t amount = 0;
      if (!ToCurrency(statement.Real(column), amount)) Fail(kOverflow);
      return ports::CurrencyValue{amount};
    }
    case ValueType::kStoredCurrency:
      return ports::CurrencyValue{statement.Integer(column)};
    case ValueType::kStoredGuid:
      return GuidText(statement.Bytes(column));
    case ValueType::kStoredDecimal:
      return ports::DecimalValue{std::string(statement.Text(column))};
    case ValueType::kDate:
      if (!tmw::IsDateInRange(statement.Real(column))) Fail(kOverflow);
      return ports::DateValue{statement.Real(column)};
    default:
      return ReadByClass(statement, column);
  }
}

}  // namespace jet
