#include "database/table_lookup.h"

#include <algorithm>
#include <variant>

#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/text.h"

namespace tmw {
namespace {

// The tables that have none of these attributes.
std::vector<std::string> TablesWithout(std::uint32_t attributes, ports::Database& database) {
  std::vector<std::string> names;
  for (const ports::TableSummary& table : database.Tables()) {
    if ((table.attributes & attributes) == 0) names.push_back(table.name);
  }
  return names;
}

}  // namespace

bool HasTable(ports::Database& database, const std::string& name) {
  for (const ports::TableSummary& table : database.Tables()) {
    if (EqualIgnoringCase(table.name, name)) return true;
  }
  return false;
}

bool TableExists(const std::string& name, ports::Database& database) {
  try {
    database.Table(name);
    return true;
  } catch (...) {
    return false;
  }
}

std::vector<std::string> OrdinaryTables(ports::Database& database) {
  return TablesWithout(ports::kSystemTable, database);
}

std::vector<std::string> UserTables(ports::Database& database) {
  return TablesWithout(ports::kSystemTable | ports::kLinkedTable, database);
}

std::int64_t CountRows(ports::Database& database, const std::string& table) {
  const auto counted = database.OpenRecordset("select count(*) from [" + table + "]",
                                              ports::RecordsetType::kDynaset);
  return std::get<std::int32_t>(counted->Value(0));
}

TableRows CountAllRows(ports::Database& database) {
  TableRows rows;
  for (const std::string& table : UserTables(database))
    rows.emplace(table, CountRows(database, table));
  return rows;
}

std::vector<ports::RelationDefinition> UserRelations(ports::Database& database) {
  const std::vector<std::string> tables = UserTables(database);
  const auto is_ours = [&tables](const std::string& name) {
    return std::any_of(tables.begin(), tables.end(), [&name](const std::string& table) {
      return EqualIgnoringCase(table, name);
    });
  };
  std::vector<ports::RelationDefinition> relations = database.Relations();
  std::erase_if(relations, [&is_ours](const ports::RelationDefinition& relation) {
    return !is_ours(relation.table) || !is_ours(relation.foreign_table);
  });
  return relations;
}

}  // namespace tmw
