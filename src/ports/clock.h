#pragma once

#include <cstdint>
#include <memory>

namespace ports {

// Waits, a monotonic tick count and the time.
class Clock {
 public:
  virtual ~Clock() = default;

  // Sleeps for the given number of milliseconds; window events are not processed meanwhile.
  virtual void Sleep(std::int32_t milliseconds) = 0;

  // Milliseconds since an arbitrary moment, never going back. 64 bits: no wrap-around to handle.
  virtual std::int64_t TickCount() = 0;

  // The system's time: seconds since 1970-01-01 00:00 UTC. The user may set it to anything.
  virtual std::int64_t UtcSeconds() = 0;
};

}  // namespace ports
