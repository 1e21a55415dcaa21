#pragma once

#include <string>
#include <string_view>

#include "jet/table_info.h"
#include "jet/values/value_type.h"

namespace jet::sql {

// A translated expression. A raw one may have an amount, a GUID or a decimal in its stored form, a
// decoded one has values to compute with.
struct TypedSql {
  std::string sql;
  ValueType type = ValueType::kUnknown;
  const FieldInfo* field = nullptr;  // set for a plain column of a table
  bool is_present = false;           // a text that is never Null
};

TypedSql Decoded(const TypedSql& raw);

// kCollate if the value may be a text, kCollateDecimal for a stored decimal, else empty.
std::string_view CollationOf(ValueType type);

// True for Booleans, numbers and dates.
bool IsNumeric(ValueType type);

// The number of the type, as functions get it.
std::string TypeCode(ValueType type);
// A decoded value as a number, a text or a date, converted at run time if necessary.
std::string NumberSql(const TypedSql& value);
std::string TextSql(const TypedSql& value);
std::string MomentSql(const TypedSql& value);

}  // namespace jet::sql
