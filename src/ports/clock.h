#pragma once

#include <cstdint>
#include <memory>

namespace ports {

// Waits and a monotonic tick count.
class Clock {
 public:
  virtual ~Clock() = default;

  // Sleeps for the given number of milliseconds; window events are not processed meanwhile.
  virtual void Sleep(std::int32_t milliseconds) = 0;

  // Milliseconds since an arbitrary moment, never going back. 64 bits: no wrap-around to handle.
  virtual std::int64_t TickCount() = 0;
};

}  // namespace ports
