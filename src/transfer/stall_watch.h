#pragma once

#include <cstdint>

namespace tmw {

// Watches how fast a server sends. By the clock, a server that has sent fewer than 1 KiB within the
// last minute has stalled, even if it keeps sending a byte now and then.
class StallWatch {
 public:
  // From now on.
  void Start();

  void NoteArrived(std::int32_t bytes);

  // Time that was not spent waiting for the server does not count.
  void Excuse(std::int64_t milliseconds) { since_ += milliseconds; }

  bool IsStalled() const;

 private:
  std::int64_t since_ = 0;  // tick of the start or of the last full KiB
  std::int64_t bytes_ = 0;  // arrived since
};

}  // namespace tmw
