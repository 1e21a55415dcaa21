#pragma once

#include <optional>
#include <string>

#include "database/db_version.h"

namespace tmw {

struct Backup {
  std::string Archive;
  DbVersion Version{};  // of the database in it
};

// Packs the user database into a zip file beside it, "Tamrin_117.zip" for the database's build. An
// archive of that name that is there already counts only if it holds the database as it is today,
// which packing it once more shows; otherwise the next free name is taken, "Tamrin_117 (2).zip". No
// archive is ever replaced. Returns nothing if there is no backup, which has been reported.
std::optional<Backup> PackUserDatabase();

}  // namespace tmw
