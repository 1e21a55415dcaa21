#include "jet/file/layout_builder.h"

#include <algorithm>
#include <utility>

#include "jet/values/sort_key.h"

namespace jet::file {
namespace {

namespace column_flags = definition::column;
namespace index_flags = definition::real_index;

// A GUID has a fixed width and stands among the variable columns all the same.
bool HasFixedPlace(ColumnType type) {
  return type == ColumnType::kBoolean || type == ColumnType::kWideBinary ||
         (ValueWidth(type) != 0 && type != ColumnType::kGuid);
}

std::uint16_t SizeOf(ColumnType type, std::uint16_t size) {
  if (type == ColumnType::kBoolean) return 1;
  if (IsLong(type)) return 0;
  const std::size_t width = ValueWidth(type);
  return width == 0 ? size : static_cast<std::uint16_t>(width);
}

}  // namespace

ColumnLayout NewColumn(std::string name, ColumnType type, std::uint16_t size,
                       std::uint32_t sort_order) {
  ColumnLayout column;
  column.name = std::move(name);
  column.type = type;
  column.size = SizeOf(type, size);
  column.sort_order = sort_order;
  column.flags = column_flags::kNullable;
  if (HasFixedPlace(type)) column.flags |= column_flags::kFixed;
  return column;
}

void PlaceInRecord(TableLayout& table) {
  std::uint16_t id = 0;
  std::uint16_t fixed_offset = 0;
  std::uint16_t variable_slot = 0;
  for (ColumnLayout& column : table.columns) {
    column.id = id++;
    column.variable_slot = variable_slot;
    if (!column.IsFixed()) {
      ++variable_slot;
    } else if (column.type != ColumnType::kBoolean) {
      column.fixed_offset = fixed_offset;
      fixed_offset = static_cast<std::uint16_t>(fixed_offset + column.size);
    }
  }
  table.column_ids = id;
  table.variable_columns = variable_slot;
}

void PlaceColumns(TableLayout& table) {
  PlaceInRecord(table);
  for (ColumnLayout& column : table.columns)
    column.ordinal = column.id;
}

void AddIndex(TableLayout& table, std::string name, std::vector<KeyColumn> columns,
              std::uint8_t flags, bool is_primary) {
  LogicalIndexLayout logical;
  logical.name = std::move(name);
  logical.number = NextIndexNumber(table);
  logical.real_index = static_cast<std::uint32_t>(table.indexes.size());
  if (is_primary) logical.kind = definition::logical_index::kPrimary;
  IndexLayout index;
  index.columns = std::move(columns);
  index.flags = flags | index_flags::kAlways;
  table.indexes.push_back(std::move(index));
  InsertByName(table, std::move(logical));
}

std::uint32_t NextIndexNumber(const TableLayout& table) {
  std::uint32_t next = 0;
  for (const LogicalIndexLayout& index : table.logical_indexes)
    next = std::max(next, index.number + 1);
  return next;
}

void InsertByName(TableLayout& table, LogicalIndexLayout index) {
  const auto place = std::find_if(table.logical_indexes.begin(), table.logical_indexes.end(),
                                  [&index](const LogicalIndexLayout& other) {
                                    return CompareTexts(index.name, other.name) < 0;
                                  });
  table.logical_indexes.insert(place, std::move(index));
}

}  // namespace jet::file
