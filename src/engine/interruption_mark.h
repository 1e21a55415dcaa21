#pragma once

#include <string>

#include "engine/working_folders.h"

// The mark of an installation under way: a file in the release's folder, holding the release's
// VersionID. It lies there from before the first old file is removed until clean-up. A run that
// finds one completes the installation, even if every file already is the new one.
namespace tmw {

// The mark is on the disk when the call returns. An existing one stays as it is.
void MarkInstallation(const ReleasePaths& release, const std::string& version_id);

// Removes the marks of all releases: one that was interrupted has been replaced by the one that is
// complete now.
void UnmarkInstallations(const std::string& temp_dir);

// True if the folder holds the mark of any release.
bool IsInstallationInterrupted(const std::string& temp_dir);

}  // namespace tmw
