#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "jet/file/table_layout.h"
#include "ports/database_types.h"

// The way between the bytes that stand in a record and the values that the database port speaks in.
namespace jet::file {

// Nothing is Null. The bytes of a long column are the whole value, not its reference. Memo and text
// become text, OLE and binary columns bytes. Bytes of a wrong length give Null only where the file
// may really hold them: throws Damage (page 0) otherwise.
ports::DatabaseValue ToValue(const ColumnLayout& column, std::optional<std::string_view> stored);

// The reverse: nothing for Null and Empty. 3421 when the value is none of the column's type;
// whoever writes converts beforehand.
std::optional<std::string> ToStored(const ColumnLayout& column, const ports::DatabaseValue& value);

}  // namespace jet::file
