#pragma once

#include "ports/ports.h"

namespace tests {

// Restores the process's ports at the end of a test.
class ScopedPorts {
 public:
  ScopedPorts() : saved_(ports::CurrentPorts()) {}
  ScopedPorts(const ScopedPorts&) = delete;
  ScopedPorts& operator=(const ScopedPorts&) = delete;
  ~ScopedPorts() { ports::CurrentPorts() = saved_; }

  ports::Ports& operator*() const { return ports::CurrentPorts(); }
  ports::Ports* operator->() const { return &ports::CurrentPorts(); }

 private:
  ports::Ports saved_;
};

}  // namespace tests
