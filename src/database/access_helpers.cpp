#include "database/access_helpers.h"

#include "database/database_texts.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "ports/ports.h"
#include "services/product_settings.h"

namespace tmw::database_utils {
namespace {

constexpr const char* kModule = "mTmDaoDataBaseForUtils";

// Never destroyed: the end of the process closes the file, whatever statics are gone by then.
std::unique_ptr<ports::Database>& CachedUserDB() {
  static auto& cached = *new std::unique_ptr<ports::Database>();
  return cached;
}

ports::Database& GivenOrCached(ports::Database* database) {
  return database != nullptr ? *database : GetCachedUserDB();
}

}  // namespace

std::string GetUserDBFileName() try {
  return GetDataBasePath() + std::string(names::kUserDatabase);
} catch (...) {
  ReRaiseError(kModule, "GetUserDBFileName");
}

std::unique_ptr<ports::Database> GetUserDB() try {
  return ports::CurrentPorts().database->OpenDatabase(GetUserDBFileName(), false, false);
} catch (...) {
  ReRaiseError(kModule, "GetUserDB");
}

ports::Database& GetCachedUserDB() try {
  std::unique_ptr<ports::Database>& cached = CachedUserDB();
  if (!cached) cached = GetUserDB();
  return *cached;
} catch (...) {
  ReRaiseError(kModule, "GetCachedUserDB");
}

void CloseCachedUserDB() try {
  std::unique_ptr<ports::Database>& cached = CachedUserDB();
  if (cached) cached->Close();
  cached.reset();
} catch (...) {
  ReRaiseError(kModule, "CloseCachedUserDB");
}

void TmExecuteSql(const std::string& sql, ports::Database* database) try {
  GivenOrCached(database).Execute(sql, false);
} catch (...) {
  ReRaiseError(kModule, "TmExecuteSql", database_texts::FailedStatement(sql));
}

std::unique_ptr<ports::DatabaseRecordset> OpenTableRecordset(const std::string& table,
                                                             const std::string& index,
                                                             ports::Database* database) try {
  auto recordset = GivenOrCached(database).OpenRecordset(table, ports::RecordsetType::kTable);
  if (!index.empty()) recordset->SetIndex(index);
  return recordset;
} catch (...) {
  ReRaiseError(kModule, "OpenTableRecordset", database_texts::FailedTable(table, index));
}

void SafeMoveFirst(ports::DatabaseRecordset& recordset) try {
  try {
    recordset.MoveFirst();
  } catch (const ports::DatabaseError& error) {
    if (error.Number != ports::kNoCurrentRecord) throw;
  }
} catch (...) {
  ReRaiseError(kModule, "SafeMoveFirst");
}

}  // namespace tmw::database_utils
