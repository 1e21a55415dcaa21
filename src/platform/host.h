#pragma once

#include <memory>

#include "platform/ports.h"

namespace platform {

// Owner of one real implementation of every port.
class Host {
 public:
  virtual ~Host() = default;
  virtual Ports MakePorts() = 0;
};

// The program's start passes its own argc and argv.
std::unique_ptr<Host> MakeHost(int argc, char** argv);

}  // namespace platform
