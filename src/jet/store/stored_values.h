#pragma once

#include <string>

#include "jet/store/sqlite.h"
#include "jet/values/value_type.h"
#include "ports/database_types.h"

// How values lie in the storage: Booleans as -1 and 0, Currency as ten-thousandths, GUIDs as 16
// bytes, the rest as numbers, texts and bytes.
namespace jet {

// The value must have the type's form (ConvertTo) and live until the statement has been run.
void BindValue(Statement& statement, int parameter, const ports::DatabaseValue& value,
               ports::DataType type);

// A column of that field type, as it lies in the table.
ports::DatabaseValue ReadStored(const Statement& statement, int column, ports::DataType type);

// A computed value.
ports::DatabaseValue ReadComputed(const Statement& statement, int column, ValueType type);

}  // namespace jet
