#pragma once

#include <string>

#include "jet/table_info.h"

namespace jet::sql {

// What a row that a statement adds has in a field that the statement does not name; empty when the
// storage's own Null will do.
std::string OmittedValue(const TableInfo& table, const FieldInfo& field);

}  // namespace jet::sql
