#pragma once

#include "database/database_build.h"
#include "database/held_relations.h"
#include "ports/database.h"
#include "services/updater_events.h"

// The reference database: the release's tables, user tables empty, dictionaries filled. A function
// that returns false has reported why, unless the user has cancelled.
namespace tmw {

// In the structures folder; the user database is only read.
bool BuildEtalonDB(const DatabaseBuild& build, UpdaterEvents& events);

// Deletes the tables that the release does not name. No relation may keep them.
bool DeteleUnnecessaryTables(const DatabaseBuild& build, ports::Database& database);

// Creates the release's tables anew and counts their rows. Their relations are held then.
bool CreateTablesInEtalonDB(const DatabaseBuild& build, UpdaterEvents& events,
                            ports::Database& database, HeldRelations& relations);

}  // namespace tmw
