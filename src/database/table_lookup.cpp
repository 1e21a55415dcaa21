#include "database/table_lookup.h"

#include <variant>

#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/text.h"

namespace tmw {

bool HasTable(platform::Database& database, const std::string& name) {
  for (const platform::TableSummary& table : database.Tables()) {
    if (EqualIgnoringCase(table.name, name)) return true;
  }
  return false;
}

std::vector<std::string> OrdinaryTables(platform::Database& database) {
  std::vector<std::string> names;
  for (const platform::TableSummary& table : database.Tables()) {
    if ((table.attributes & (platform::kSystemObject | platform::kHiddenObject)) == 0)
      names.push_back(table.name);
  }
  return names;
}

std::int64_t CountRows(platform::Database& database, const std::string& table) {
  const auto counted = database.OpenRecordset("select count(*) from [" + table + "]",
                                              platform::RecordsetType::kDynaset);
  return std::get<std::int32_t>(counted->Value(0));
}

}  // namespace tmw
