#pragma once

#include <memory>
#include <optional>

#include "ports/ports.h"

namespace ports {

// Owner of one real implementation of every port.
class Host {
 public:
  virtual ~Host() = default;
  virtual Ports MakePorts() = 0;
};

// To be called first in the updater's main. On Linux answers "--help" and "--version" and returns
// the exit code; otherwise makes the relative paths among the arguments and in the variables for
// settings absolute and returns nothing. Nothing at all on Windows.
std::optional<int> PrepareUpdater(int argc, char** argv);

// To be called next, before anything else runs. On Linux the first updater forks: the
// parent waits until every updater of the chain (the copies that restart each other, not the
// product) has ended and returns the last one's exit code; the child returns nothing and does the
// work. Otherwise, and on Windows, returns nothing at once.
std::optional<int> WaitForUpdaterChain();

// The program's start passes its own argc and argv. A command-line tool asks in the terminal even
// if there is a display (Linux).
std::unique_ptr<Host> MakeHost(int argc, char** argv, bool is_tool = false);

}  // namespace ports
