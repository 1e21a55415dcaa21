#pragma once

#include <map>
#include <string>

#include "database/database_build.h"
#include "database/wu_db_ver_update.h"
#include "ports/database.h"
#include "services/updater_events.h"

// The working database: a copy of the user database with the new dictionaries, brought up to the
// release's version by its update scripts. Operations return false when they have told the user or
// he wants out.
namespace tmw {

// By the start version's text followed by "_".
using ScriptSet = std::map<std::string, WuDbVerUpdate>;

// In the scripts folder; the user database is only read.
bool BuildWorkingDB(const DatabaseBuild& build, UpdaterEvents& events);

// Imports the dictionaries that were delivered, then counts the rows of all tables: the scripts
// start from everything the user has.
bool CopyDictsIntoWorkingDB(const DatabaseBuild& build, UpdaterEvents& events,
                            ports::Database& database);

bool LoadUpdateScripts(const DatabaseBuild& build, ScriptSet& scripts);

bool RunUpdateScriptsOnWorkingDB(const DatabaseBuild& build, UpdaterEvents& events,
                                 ports::Database& database);

}  // namespace tmw
