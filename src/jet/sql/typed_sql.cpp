#include "jet/sql/typed_sql.h"

#include "jet/storage_sql.h"

namespace jet::sql {

TypedSql Decoded(const TypedSql& raw) {
  if (raw.type == ValueType::kStoredCurrency)
    return {"(" + raw.sql + "/10000.0)", ValueType::kCurrency};
  if (raw.type == ValueType::kStoredGuid) return {CallSql(fn::kGuid, {raw.sql}), ValueType::kText};
  if (raw.type == ValueType::kStoredDecimal)
    return {"CAST(" + raw.sql + " AS REAL)", ValueType::kNumber};
  return raw;
}

std::string_view CollationOf(ValueType type) {
  if (type == ValueType::kStoredDecimal) return kCollateDecimal;
  return type == ValueType::kText || type == ValueType::kUnknown ? kCollate : "";
}

bool IsNumeric(ValueType type) {
  return type >= ValueType::kBoolean && type <= ValueType::kDate;
}

std::string TypeCode(ValueType type) {
  return std::to_string(static_cast<std::int32_t>(type));
}

std::string NumberSql(const TypedSql& value) {
  if (IsNumeric(value.type) || value.type == ValueType::kNull) return value.sql;
  return CallSql(fn::kNumber, {value.sql});
}

std::string TextSql(const TypedSql& value) {
  if (value.type == ValueType::kText || value.type == ValueType::kNull) return value.sql;
  // A column of whole numbers holds nothing else, so a cast will do.
  if (value.type == ValueType::kInteger && value.field != nullptr)
    return "CAST(" + value.sql + " AS TEXT)";
  return CallSql(fn::kText, {value.sql, TypeCode(value.type)});
}

std::string MomentSql(const TypedSql& value) {
  if (value.type == ValueType::kDate || value.type == ValueType::kNull) return value.sql;
  return CallSql(fn::kMoment, {value.sql});
}

}  // namespace jet::sql
