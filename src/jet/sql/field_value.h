#pragma once

#include <string>

#include "jet/sql/typed_sql.h"
#include "jet/table_info.h"

// Values for fields: converted to the field's type, its demands checked when the statement runs.
namespace jet::sql {

std::string AssignedSql(const TypedSql& raw, const FieldInfo& field);

// The value of the field's default expression.
std::string DefaultSql(const FieldInfo& field);

// The field's value in a row that is added without naming the field; empty when the storage's own
// Null will do.
std::string OmittedSql(const TableInfo& table, const FieldInfo& field);

}  // namespace jet::sql
