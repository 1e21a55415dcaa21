#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ports/database_types.h"

// Field types and single values of the table text format (module miDBExport).
namespace tmw {

// "Text" for dbText …; "U13" for a code without a token.
std::string FieldTypeToStr(ports::DataType type);

// Returns nothing for a text that is not a token.
std::optional<ports::DataType> FieldTypeFromStr(std::string_view token);

// The DB string of a value. The first character is the kind: E empty, S text, T and F truth, d and
// D dates, a digit or "-" a number; Null is the empty string. What cannot be read back is "?
// (0x…)". Texts escape ^ | CR LF TAB and U+00A0 as ^1 to ^7.
std::string VariantToDBString(const ports::DatabaseValue& value);

// The reverse; numbers become doubles. A text that is not a DB string raises error 1001.
ports::DatabaseValue DBStringToVariant(std::string_view text);

}  // namespace tmw
