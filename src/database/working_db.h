#pragma once

#include <map>
#include <string>

#include "database/database_build.h"
#include "database/held_relations.h"
#include "database/wu_db_ver_update.h"
#include "ports/database.h"
#include "services/updater_events.h"

// The working database: a copy of the user database with the new dictionaries, brought up to the
// release's version by its update scripts. A function that returns false has reported why, unless
// the user has cancelled.
namespace tmw {

// The key is the text of the start version, followed by "_".
using ScriptSet = std::map<std::string, WuDbVerUpdate>;

// In the scripts folder; the user database is only read.
bool BuildWorkingDB(const DatabaseBuild& build, UpdaterEvents& events);

// Imports the dictionaries that were delivered and puts back the relations that fit, then compares
// the row counts of all tables with the user database: the scripts start from everything the user
// has.
bool CopyDictsIntoWorkingDB(const DatabaseBuild& build, UpdaterEvents& events,
                            ports::Database& database, HeldRelations& relations);

bool LoadUpdateScripts(const DatabaseBuild& build, ScriptSet& scripts);

bool RunUpdateScriptsOnWorkingDB(const DatabaseBuild& build, UpdaterEvents& events,
                                 ports::Database& database, HeldRelations& relations);

}  // namespace tmw
