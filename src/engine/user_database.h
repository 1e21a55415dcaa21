#pragma once

#include <string>

#include "database/db_version.h"

// Replaces the user database by the one that an update has built. The user's rows exist whole at
// every moment, in one of two files: the new database is copied beside the old one and checked,
// then the old one is deleted, then the copy gets its name. A function that returns false has
// reported why.
namespace tmw {

// Opens the user database exclusively and closes it, which raises an error if another program holds
// it. Unless on a client, an interrupted replacement is dealt with: one that lacks only its last
// step is finished first, and an unused copy is deleted afterwards.
void CheckUserDatabase(bool is_client);

// The hash of all pages of the user database but the first, in which an engine notes who has it
// open.
std::string HashOfUserRows();

struct NewUserDatabase {
  std::string Built;      // where it was built
  std::string BuiltHash;  // from then
  DbVersion TargetVersion{};
  std::string UserRowsHash;  // HashOfUserRows from before the build
};

// Puts the built database in the place of the user database and deletes it where it was built. A
// user database with other rows than before the build has been written to since, and stays as it
// is.
bool ReplaceUserDatabase(const NewUserDatabase& replacement);

}  // namespace tmw
