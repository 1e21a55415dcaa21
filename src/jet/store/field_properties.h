#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/property_block.h"
#include "jet/store/sqlite.h"
#include "ports/database_types.h"

// The properties of fields: in a file, in the catalogue's _jet_property, and as values.
namespace jet {

// Properties that say what a field is; the catalogue keeps them with the field.
namespace field_property {
inline constexpr const char* kRequired = "Required";
inline constexpr const char* kAllowZeroLength = "AllowZeroLength";
inline constexpr const char* kDefaultValue = "DefaultValue";
}  // namespace field_property

bool IsPartOfDefinition(std::string_view property);

// The set of a column, null when it has none.
const file::PropertySet* FindProperties(const std::vector<file::PropertySet>& sets,
                                        std::string_view column);
// Null when there is none of that name, or no set.
const file::StoredProperty* FindProperty(const file::PropertySet* set, std::string_view name);

// Null for a type that this engine does not know.
ports::DatabaseValue PropertyValue(const file::StoredProperty& property);
// The value must have the type's form (ConvertTo).
file::StoredProperty StoredPropertyOf(std::string name, ports::DataType type,
                                      const ports::DatabaseValue& value);

// Those of a table's fields beside the ones that are part of their definitions, by the fields' ids.
using FieldProperties = std::map<std::int64_t, std::vector<file::StoredProperty>>;
FieldProperties LoadProperties(const std::shared_ptr<Connection>& storage, std::int64_t table);

// A row of _jet_property (seven parameters), and back from its columns name, type, flag and value.
// The property must live until the statement has been run.
Statement& BindProperty(Statement& insert, std::int64_t table, std::int64_t field,
                        const file::StoredProperty& property);
file::StoredProperty ReadProperty(const Statement& row, int first_column);

}  // namespace jet
