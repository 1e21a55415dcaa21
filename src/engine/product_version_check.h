#pragma once

#include <string>

#include "services/updater_events.h"

// Compares the installed product's version with that of the update.
namespace tmw {

// Asks the product's own version component; empty if there is none.
std::string LoadOldProductVersion();

// Returns true if the installed version is older or not known (empty), or if it is the same and the
// user wants it repaired; an interrupted installation of it is completed without a question.
// Returns false if the user does not, or after reporting that the versions do not allow an update.
bool CheckProductVersion(const std::string& installed, const std::string& offered,
                         const std::string& temp_dir, UpdaterEvents& events);

}  // namespace tmw
