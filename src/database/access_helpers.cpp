#include "database/access_helpers.h"

#include "database/database_texts.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "platform/ports.h"
#include "startup/services/product_settings.h"

namespace tmw::database_utils {
namespace {

constexpr const char* kModule = "mTmDaoDataBaseForUtils";

// Never destroyed: the process's end frees the file, whatever the order of its last acts.
std::unique_ptr<platform::Database>& CachedUserDB() {
  static auto& cached = *new std::unique_ptr<platform::Database>();
  return cached;
}

platform::Database& GivenOrCached(platform::Database* database) {
  return database != nullptr ? *database : GetCachedUserDB();
}

}  // namespace

std::string GetUserDBFileName() try {
  return GetDataBasePath() + std::string(names::kUserDatabase);
} catch (...) {
  ReRaiseError(kModule, "GetUserDBFileName");
}

std::unique_ptr<platform::Database> GetUserDB() try {
  return platform::CurrentPorts().database->OpenDatabase(GetUserDBFileName(), false, false);
} catch (...) {
  ReRaiseError(kModule, "GetUserDB");
}

platform::Database& GetCachedUserDB() try {
  std::unique_ptr<platform::Database>& cached = CachedUserDB();
  if (!cached) cached = GetUserDB();
  return *cached;
} catch (...) {
  ReRaiseError(kModule, "GetCachedUserDB");
}

void CloseCachedUserDB() {
  CachedUserDB().reset();
}

void TmExecuteSql(const std::string& sql, platform::Database* database) try {
  GivenOrCached(database).Execute(sql, false);
} catch (...) {
  ReRaiseError(kModule, "TmExecuteSql", database_texts::FailedStatement(sql));
}

std::unique_ptr<platform::DatabaseRecordset> OpenTableRecordset(const std::string& table,
                                                                const std::string& index,
                                                                platform::Database* database) try {
  auto recordset = GivenOrCached(database).OpenRecordset(table, platform::RecordsetType::kTable);
  if (!index.empty()) recordset->SetIndex(index);
  return recordset;
} catch (...) {
  ReRaiseError(kModule, "OpenTableRecordset", database_texts::FailedTable(table, index));
}

void SafeMoveFirst(platform::DatabaseRecordset& recordset) try {
  try {
    recordset.MoveFirst();
  } catch (const platform::DatabaseError& error) {
    if (error.Number != platform::kNoCurrentRecord) throw;
  }
} catch (...) {
  ReRaiseError(kModule, "SafeMoveFirst");
}

}  // namespace tmw::database_utils
