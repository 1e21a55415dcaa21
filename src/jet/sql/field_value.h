#pragma once

#include <string>
#include <string_view>

#include "jet/sql/typed_sql.h"
#include "jet/table_info.h"

// Values for fields: converted to the field's type and checked when the statement runs.
namespace jet::sql {

// What a statement assigns, as two lists: "c1, c2" and the values in the same order.
struct Assignments {
  std::string columns;
  std::string values;
  void Add(std::string_view column, std::string_view value);
};

std::string AssignedSql(const TypedSql& raw, const FieldInfo& field);

// The value of the field's default expression.
std::string DefaultSql(const FieldInfo& field);

// The value of a field that an INSERT does not name; empty if the field can be left out, for Null.
std::string OmittedSql(const TableInfo& table, const FieldInfo& field);

}  // namespace jet::sql
