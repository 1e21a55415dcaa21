#pragma once

#include <string>

#include "ports/outcome.h"

namespace platform {

// Returns 0 if the folder belongs to this user and nobody else may write to it, else a code. A link
// is refused.
ports::SystemCode CheckOwnFolder(const std::string& folder);

// The same, but a missing folder is created for this user alone.
ports::SystemCode MakeOwnFolder(const std::string& folder);

// Returns false on a file system that is mounted without the right to run programs.
bool LetsProgramsRun(const std::string& path);

}  // namespace platform
