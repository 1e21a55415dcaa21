#pragma once

#include <string>

#include "jet/sql/typed_sql.h"
#include "jet/table_info.h"

// Values for fields: converted to the field's type and checked when the statement runs.
namespace jet::sql {

std::string AssignedSql(const TypedSql& raw, const FieldInfo& field);

// The value of the field's default expression.
std::string DefaultSql(const FieldInfo& field);

// The value of a field that an INSERT does not name; empty if the field can be left out, for Null.
std::string OmittedSql(const TableInfo& table, const FieldInfo& field);

}  // namespace jet::sql
