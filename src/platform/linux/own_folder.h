#pragma once

#include <string>

#include "ports/outcome.h"

namespace platform {

// Makes a folder for this user alone (mode 0700) unless it is there; an existing one that only this
// user may write to is closed to the others. Returns 0, else a code: EPERM for a folder of somebody
// else or one that others may write to, ENOTDIR for a link or a file.
ports::SystemCode MakeOwnFolder(const std::string& folder);

// Whether users other than this one and root may put something into the folder, or into the nearest
// one above it if it is not there.
bool OthersMayWriteTo(const std::string& folder);

// The nearest folder at or above the path that exists.
std::string ExistingPartOf(std::string path);

// Returns false on a file system that is mounted without the right to run programs.
bool LetsProgramsRun(const std::string& path);

}  // namespace platform
