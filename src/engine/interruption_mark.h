#pragma once

#include <string>

#include "engine/release_paths.h"

// The mark of an installation under way: a file in the release folder that names the release.
namespace tmw {

// On the disk when the call returns.
void MarkInstallation(const ReleasePaths& release, const std::string& version_id);

void UnmarkInstallation(const ReleasePaths& release);

bool IsInstallationInterrupted(const ReleasePaths& release, const std::string& version_id);

}  // namespace tmw
