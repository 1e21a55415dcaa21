#pragma once

#include <cstdint>
#include <memory>

namespace ports {

// Time as the updater needs it: waits and a tick count that only grows.
class Clock {
 public:
  virtual ~Clock() = default;

  // Sleeps for the given number of milliseconds; events of the window are not let through.
  virtual void Sleep(std::int32_t milliseconds) = 0;

  // Milliseconds since an arbitrary moment, never going back. 64 bits: no wrap-around to handle.
  virtual std::int64_t TickCount() = 0;
};

}  // namespace ports
