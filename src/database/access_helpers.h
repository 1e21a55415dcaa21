#pragma once

#include <memory>
#include <string>

#include "ports/database.h"

// Access to the user database, and statements and tables whose failures name what was being done
// (module mTmDaoDataBaseForUtils).
namespace tmw::database_utils {

// "Tamrin.mdb" in the product's database folder.
std::string GetUserDBFileName();

// Opens it shared, for reading and writing.
std::unique_ptr<ports::Database> GetUserDB();

// Opened at first use and kept for the life of the process.
ports::Database& GetCachedUserDB();
// Closes it; the next use opens it again.
void CloseCachedUserDB();

// Runs a statement on the database, without one on the cached user database. An error's chain holds
// the statement.
void TmExecuteSql(const std::string& sql, ports::Database* database = nullptr);

// Opens a table, ordered by the index unless its name is empty.
std::unique_ptr<ports::DatabaseRecordset> OpenTableRecordset(const std::string& table,
                                                             const std::string& index,
                                                             ports::Database* database = nullptr);

// Moves to the first row if there is one.
void SafeMoveFirst(ports::DatabaseRecordset& recordset);

}  // namespace tmw::database_utils
