#include "database/table_lookup.h"

#include <variant>

#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/text.h"

namespace tmw {
namespace {

// The tables that have none of these attributes.
std::vector<std::string> TablesWithout(std::uint32_t attributes, platform::Database& database) {
  std::vector<std::string> names;
  for (const platform::TableSummary& table : database.Tables()) {
    if ((table.attributes & attributes) == 0) names.push_back(table.name);
  }
  return names;
}

}  // namespace

bool HasTable(platform::Database& database, const std::string& name) {
  for (const platform::TableSummary& table : database.Tables()) {
    if (EqualIgnoringCase(table.name, name)) return true;
  }
  return false;
}

std::vector<std::string> OrdinaryTables(platform::Database& database) {
  return TablesWithout(platform::kSystemObject | platform::kHiddenObject, database);
}

std::int64_t CountRows(platform::Database& database, const std::string& table) {
  const auto counted = database.OpenRecordset("select count(*) from [" + table + "]",
                                              platform::RecordsetType::kDynaset);
  return std::get<std::int32_t>(counted->Value(0));
}

TableRows CountAllRows(platform::Database& database) {
  constexpr std::uint32_t kNotCounted =
      platform::kSystemObject | platform::kHiddenObject | platform::kLinkedTable;
  TableRows rows;
  for (const std::string& table : TablesWithout(kNotCounted, database))
    rows.emplace(table, CountRows(database, table));
  return rows;
}

}  // namespace tmw
