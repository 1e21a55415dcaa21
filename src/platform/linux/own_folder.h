#pragma once

#include <string>

#include "ports/outcome.h"

namespace platform {

// 0 when the folder is this user's own and nobody else may write to it, else a code. A link is
// none.
ports::SystemCode CheckOwnFolder(const std::string& folder);

// The same; a missing folder is made, for this user alone.
ports::SystemCode MakeOwnFolder(const std::string& folder);

// False on a file system that is mounted without the right to run programs.
bool LetsProgramsRun(const std::string& path);

}  // namespace platform
