#pragma once

#include <string>
#include <vector>

namespace platform {

// The names of the programs that run the file or hold a lock on it, as far as /proc shows them to
// this user; each once, sorted.
std::vector<std::string> HoldersOf(const std::string& path);

}  // namespace platform
