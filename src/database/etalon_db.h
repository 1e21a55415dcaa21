#pragma once

#include "database/build_events.h"
#include "database/database_build.h"
#include "ports/database.h"

// The reference database: the release's tables, user tables empty, dictionaries filled. Operations
// return false when they have told the user or he wants out.
namespace tmw {

// In the structures folder; the user database is only read.
bool BuildEtalonDB(const DatabaseBuild& build, BuildEvents& events);

// Deletes the tables that the release does not name.
bool DeteleUnnecessaryTables(const DatabaseBuild& build, ports::Database& database);

// Creates the release's tables anew and counts their rows.
bool CreateTablesInEtalonDB(const DatabaseBuild& build, BuildEvents& events,
                            ports::Database& database);

}  // namespace tmw
