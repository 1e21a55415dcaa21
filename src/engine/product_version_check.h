#pragma once

#include <string>

#include "services/updater_events.h"

// The installed product's version against that of the update.
namespace tmw {

// Of the product's own version component; empty if that is not there.
std::string LoadOldProductVersion();

// Returns true if the installed version is older or not known (empty), or if the user wants the
// same one repaired. An installation that was interrupted is completed without a question.
// In all other cases the reason has been reported.
bool CheckProductVersion(const std::string& installed, const std::string& offered,
                         const std::string& temp_dir, UpdaterEvents& events);

}  // namespace tmw
