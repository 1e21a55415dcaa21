#pragma once

#include <cstdint>
#include <vector>

#include "jet/file/property_block.h"
#include "jet/file/table_layout.h"
#include "jet/store/field_properties.h"
#include "jet/table_info.h"
#include "ports/database_types.h"

// The way between the definitions that lie in a file and those that the port speaks in.
namespace jet {

ports::DataType FieldType(file::ColumnType type);

ports::FieldDefinition FieldOf(const file::ColumnLayout& column,
                               const file::PropertySet* properties);

// False for what the other side of a relation keeps in the table that it refers to.
bool IsListed(const file::LogicalIndexLayout& index);

ports::IndexDefinition IndexOf(const file::TableLayout& table,
                               const file::LogicalIndexLayout& index);

// The table as it is to lie in a file, without what its relations add. The source is what it was in
// the file that it comes from, null when it was made here: its columns keep what the catalogue does
// not know of them. The properties are by the ids of the fields.
file::TableLayout LayoutOf(const TableInfo& table, const file::TableLayout* source,
                           const FieldProperties& properties, std::uint32_t sort_order);

// The sets of the table's columns for a file.
std::vector<file::PropertySet> PropertySetsOf(const TableInfo& table,
                                              const FieldProperties& properties);

}  // namespace jet
