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

// To be called first in main, before anything else runs. On Linux, in an updater started from a
// terminal, the process divides: one waits until every updater of the chain (the copies that
// restart each other, not the product) has ended and gets the last one's exit code, the other gets
// nothing and does the work. Everywhere else: nothing, at once.
std::optional<int> WaitForUpdaterChain();

// The program's start passes its own argc and argv.
std::unique_ptr<Host> MakeHost(int argc, char** argv);

}  // namespace ports
