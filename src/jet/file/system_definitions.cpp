#include "jet/file/system_definitions.h"

#include <algorithm>
#include <utility>

#include "jet/file/layout_builder.h"
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

}  // namespace

TableLayout SystemLayout(const SystemTable& table, PageNumber page, std::uint32_t sort_order) {
  TableLayout layout;
  layout.page = page;
  layout.kind = definition::kSystemTable;
  for (const SystemColumn& described : table.columns) {
    ColumnLayout column = NewColumn(described.name, described.type, described.size, sort_order);
    column.flags = described.flags;
    layout.columns.push_back(std::move(column));
  }
  PlaceInRecord(layout);
  for (const SystemIndex& described : table.indexes) {
    std::vector<KeyColumn> columns;
    for (const std::uint16_t id : described.columns)
      columns.push_back({id, false});
    AddIndex(layout, described.name, std::move(columns), described.flags, described.is_primary);
  }
  std::sort(layout.columns.begin(), layout.columns.end(),
            [](const ColumnLayout& a, const ColumnLayout& b) {
              return CompareTexts(a.name, b.name) < 0;
            });
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
