#pragma once

#include "jet/store/sqlite.h"
#include "jet/values/value_type.h"
#include "ports/database_types.h"

// The stored form of values: Booleans are -1 and 0, Currency is ten-thousandths, GUIDs are 16
// bytes, all others are numbers, texts and bytes.
namespace jet {

// The value must have been converted to the type and stay valid until the statement has been run.
void BindValue(Statement& statement, int parameter, const ports::DatabaseValue& value,
               ports::DataType type);

// Reads a column of a table.
ports::DatabaseValue ReadStored(const Statement& statement, int column, ports::DataType type);

// Reads a computed column.
ports::DatabaseValue ReadComputed(const Statement& statement, int column, ValueType type);

}  // namespace jet
