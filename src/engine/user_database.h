#pragma once

#include <string>

#include "database/db_version.h"

// The user database's change to the next one. Its rows exist whole at every moment, in one of two
// files: the next one is copied completely beside the old one and checked, then the old one is
// deleted, then the copy gets its name.
namespace tmw {

// Finishes a change that was interrupted before its last step; to be called before anything opens
// the user database.
void MendUserDatabase();

// A copy that an interrupted change left beside a user database that can be opened.
void ForgetUnusedCopy();

// Packs the user database into a zip file beside it, unless one of its build is there. False: the
// user has been told.
bool PackUserDatabase();

// Of all pages of the user database but the first, in which an engine notes who has it open.
std::string HashOfUserRows();

// hash: HashOfUserRows before the built one was made from them; a file that has another one now has
// been written to since, and stays. The built one goes when the new one is in its place. False,
// with the old one in its place: the user has been told.
bool ReplaceUserDatabase(const std::string& built, const DbVersion& target_version,
                         const std::string& hash);

}  // namespace tmw
