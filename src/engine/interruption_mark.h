#pragma once

#include <string>

#include "engine/release_paths.h"

// The mark of an installation under way: a file in the release folder that names the release.
namespace tmw {

// On the disk when the call returns. A mark that is there stays as it is.
void MarkInstallation(const ReleasePaths& release, const std::string& version_id);

// Takes the marks of all releases away: the one that is complete now has taken their place.
void UnmarkInstallations(const std::string& temp_dir);

// Whichever release it was that was being installed.
bool IsInstallationInterrupted(const std::string& temp_dir);

}  // namespace tmw
