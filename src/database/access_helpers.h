#pragma once

#include <memory>
#include <string>

#include "ports/database.h"

// The one way to the user database, and to run a statement or open a table so that a failure names
// what was being done (module mTmDaoDataBaseForUtils).
namespace tmw::database_utils {

// "Tamrin.mdb" in the product's database folder.
std::string GetUserDBFileName();

// Opens it shared, for reading and writing.
std::unique_ptr<ports::Database> GetUserDB();

// Opened at first use and kept for the life of the process.
ports::Database& GetCachedUserDB();
// Closes it; the next use opens it anew.
void CloseCachedUserDB();

// On the given database, or on the cached user database when there is none. The failing statement
// goes into the error's chain.
void TmExecuteSql(const std::string& sql, ports::Database* database = nullptr);

// A table's rows, in the order of that index unless its name is empty.
std::unique_ptr<ports::DatabaseRecordset> OpenTableRecordset(const std::string& table,
                                                             const std::string& index,
                                                             ports::Database* database = nullptr);

// Moves to the first row; without rows nothing happens.
void SafeMoveFirst(ports::DatabaseRecordset& recordset);

}  // namespace tmw::database_utils
