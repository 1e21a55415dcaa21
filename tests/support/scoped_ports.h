#pragma once

#include "platform/ports.h"

namespace tests {

// Puts the process's ports back at the end of a test.
class ScopedPorts {
 public:
  ScopedPorts() : saved_(platform::CurrentPorts()) {}
  ScopedPorts(const ScopedPorts&) = delete;
  ScopedPorts& operator=(const ScopedPorts&) = delete;
  ~ScopedPorts() { platform::CurrentPorts() = saved_; }

  platform::Ports& operator*() const { return platform::CurrentPorts(); }
  platform::Ports* operator->() const { return &platform::CurrentPorts(); }

 private:
  platform::Ports saved_;
};

}  // namespace tests
