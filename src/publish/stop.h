#pragma once

#include <atomic>

#include "foundation/program_error.h"

// A run that the user breaks off (Ctrl+C) ends like one that fails: it takes away what it has made.
namespace publish {

inline std::atomic<bool> is_stop_wanted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal's handler sets it");

inline void ThrowIfStopped() {
  if (is_stop_wanted) tmw::RaiseProgramError("Stopped.");
}

}  // namespace publish
