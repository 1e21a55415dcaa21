#pragma once

#include <string>
#include <vector>

#include "platform/windows/windows_headers.h"
// The system's header comes first: this builds on it.
#include <restartmanager.h>

namespace platform {

// The calls of the system's Restart Manager that find out who uses a file.
struct RestartManager {
  decltype(&RmStartSession) start = nullptr;
  decltype(&RmRegisterResources) add_files = nullptr;
  decltype(&RmGetList) list = nullptr;
  decltype(&RmEndSession) end = nullptr;

  // Loads the library at first use; without it all members are null.
  static const RestartManager& OfSystem();
};

// The names of the programs that use the file, each once; empty if the manager is missing or fails.
std::vector<std::string> HoldersOf(const std::string& path, const RestartManager& manager);

}  // namespace platform
