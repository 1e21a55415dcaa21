#pragma once

#include <string>
#include <string_view>

#include "jet/table_info.h"
#include "jet/values/value_type.h"

namespace jet::sql {

// A translated expression. It is raw while amounts and GUIDs have the form in which columns hold
// them, and decoded when they are values to compute with.
struct TypedSql {
  std::string sql;
  ValueType type = ValueType::kUnknown;
  const FieldInfo* field = nullptr;  // set for a plain column of a table
  bool is_present = false;           // a text that is never Null
};

TypedSql Decoded(const TypedSql& raw);

// kCollate for what may be a text, else empty.
std::string_view CollationOf(ValueType type);

// True for Booleans, all kinds of numbers and dates.
bool IsNumeric(ValueType type);

// The number of the type, as an argument of the functions that convert values.
std::string TypeCode(ValueType type);
// A decoded value as a number, a text or a moment, converted at run time where necessary.
std::string NumberSql(const TypedSql& value);
std::string TextSql(const TypedSql& value);
std::string MomentSql(const TypedSql& value);

}  // namespace jet::sql
