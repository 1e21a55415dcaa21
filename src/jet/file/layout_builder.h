#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "jet/file/table_layout.h"

// Makes the layout of a new table: columns first, then indexes.
namespace jet::file {

// A column as it is to stand in the table's layout, not placed yet. Size: bytes of a text or binary
// column at most (two for a character); of no meaning for other types.
ColumnLayout NewColumn(std::string name, ColumnType type, std::uint16_t size,
                       std::uint32_t sort_order);

// Gives the columns ids, places in the field order and in the record, all in the order in which
// they stand.
void PlaceColumns(TableLayout& table);

// The same for the record only: ordinals stay, as they do in the engine's own tables.
void PlaceInRecord(TableLayout& table);

// An index with a tree of its own. Flags: definition::real_index, besides what every index has.
void AddIndex(TableLayout& table, std::string name, std::vector<KeyColumn> columns,
              std::uint8_t flags, bool is_primary = false);

// The first number that no index of the table has.
std::uint32_t NextIndexNumber(const TableLayout& table);

// Puts a name where it belongs among the others.
void InsertByName(TableLayout& table, LogicalIndexLayout index);

}  // namespace jet::file
