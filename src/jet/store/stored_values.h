#pragma once

#include <string>

#include "jet/sql/value_type.h"
#include "jet/store/sqlite.h"
#include "platform/database_types.h"

// How values lie in the storage: Booleans as -1 and 0, Currency as ten-thousandths, GUIDs as 16
// bytes, the rest as numbers, texts and bytes.
namespace jet {

// The value must have the type's form (ConvertTo) and live until the statement has been run.
void BindValue(Statement& statement, int parameter, const platform::DatabaseValue& value,
               platform::DataType type);

// A column of that field type, as it lies in the table.
platform::DatabaseValue ReadStored(const Statement& statement, int column, platform::DataType type);

// A computed value.
platform::DatabaseValue ReadComputed(const Statement& statement, int column, sql::ValueType type);

}  // namespace jet
