#include "jet/file/system_definitions.h"

#include <algorithm>
#include <cstddef>

#include "jet/values/sort_key.h"

namespace jet::file {
namespace {

using object_type::kContainer;
using object_type::kDatabase;
using object_type::kTable;

constexpr StandardObject kObjects[] = {
    {object_id::kTables, object_id::kRoot, kContainer, Account::kEngine, "Tables"},
    {object_id::kDatabases, object_id::kRoot, kContainer, Account::kEngine, "Databases"},
    {object_id::kRelationships, object_id::kRoot, kContainer, Account::kEngine, "Relationships"},
    {object_id::kMSysDb, object_id::kDatabases, kDatabase, Account::kAdmin, "MSysDb"},
    {system_page::kObjects, object_id::kTables, kTable, Account::kEngine, "MSysObjects"},
    {system_page::kRights, object_id::kTables, kTable, Account::kEngine, "MSysACEs"},
    {system_page::kQueries, object_id::kTables, kTable, Account::kEngine, "MSysQueries"},
    {system_page::kRelations, object_id::kTables, kTable, Account::kEngine, "MSysRelationships"},
};

constexpr Right kRights[] = {
    {system_page::kObjects, 0x60000, Account::kAdmin, false},
    {system_page::kRights, 0x60000, Account::kAdmin, false},
    {system_page::kQueries, 0x60000, Account::kAdmin, false},
    {system_page::kRelations, 0xE0000, Account::kAdmin, false},
    {object_id::kTables, 0xF00FE, Account::kCreator, true},
    {object_id::kTables, 0x60001, Account::kAdmin, false},
    {object_id::kRelationships, 0xF00FE, Account::kCreator, true},
    {object_id::kRelationships, 0x60001, Account::kAdmin, false},
    {object_id::kDatabases, 0x60000, Account::kAdmin, false},
    {object_id::kMSysDb, 0x6000E, Account::kAdmin, false},
    {object_id::kMSysDb, 0x0000E, Account::kUsers, false},
    {system_page::kQueries, 0x00014, Account::kUsers, false},
    {system_page::kRelations, 0x00014, Account::kUsers, false},
    {system_page::kObjects, 0x00014, Account::kUsers, false},
    {object_id::kTables, 0xFFEFF, Account::kUsers, true},
    {object_id::kRelationships, 0xFFFFF, Account::kUsers, true},
};

constexpr Right kTableRights[] = {
    {0, 0xFFEFF, Account::kAdmin, false},
    {0, 0xFFEFF, Account::kUsers, false},
};

constexpr Right kRelationRights[] = {
    {0, 0xF00FE, Account::kAdmin, false},
    {0, 0xFFFFF, Account::kUsers, false},
};

// Places in the record follow from the ids, which are the places in the list.
std::vector<ColumnLayout> MakeColumns(const SystemTable& table, std::uint32_t sort_order) {
  std::vector<ColumnLayout> columns;
  std::uint16_t fixed_offset = 0;
  std::uint16_t variable_slot = 0;
  for (const SystemColumn& described : table.columns) {
    ColumnLayout column;
    column.name = described.name;
    column.type = described.type;
    column.id = static_cast<std::uint16_t>(columns.size());
    column.variable_slot = variable_slot;
    column.size = described.size;
    column.sort_order = sort_order;
    column.flags = described.flags;
    if (!column.IsFixed()) {
      ++variable_slot;
    } else if (column.type != ColumnType::kBoolean) {
      column.fixed_offset = fixed_offset;
      fixed_offset = static_cast<std::uint16_t>(fixed_offset + column.size);
    }
    columns.push_back(std::move(column));
  }
  return columns;
}

template <typename T>
void SortByName(std::vector<T>& named) {
  std::sort(named.begin(), named.end(),
            [](const T& a, const T& b) { return CompareTexts(a.name, b.name) < 0; });
}

}  // namespace

TableLayout SystemLayout(const SystemTable& table, PageNumber page, std::uint32_t sort_order) {
  TableLayout layout;
  layout.page = page;
  layout.kind = definition::kSystemTable;
  layout.columns = MakeColumns(table, sort_order);
  layout.column_ids = static_cast<std::uint16_t>(layout.columns.size());
  layout.variable_columns = static_cast<std::uint16_t>(
      std::count_if(layout.columns.begin(), layout.columns.end(),
                    [](const ColumnLayout& column) { return !column.IsFixed(); }));
  for (const SystemIndex& described : table.indexes) {
    LogicalIndexLayout logical;
    logical.name = described.name;
    logical.number = static_cast<std::uint32_t>(layout.indexes.size());
    logical.real_index = logical.number;
    if (described.is_primary) logical.kind = definition::logical_index::kPrimary;
    layout.logical_indexes.push_back(std::move(logical));
    IndexLayout index;
    for (const std::uint16_t id : described.columns)
      index.columns.push_back({id, false});
    index.flags = described.flags;
    layout.indexes.push_back(std::move(index));
  }
  SortByName(layout.columns);
  SortByName(layout.logical_indexes);
  return layout;
}

std::span<const StandardObject> StandardObjects() {
  return kObjects;
}

std::span<const Right> StandardRights() {
  return kRights;
}

std::span<const Right> RightsOfNewTable() {
  return kTableRights;
}

std::span<const Right> RightsOfNewRelation() {
  return kRelationRights;
}

}  // namespace jet::file
