#pragma once

#include <cstdint>

#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/ports.h"

namespace tmw {

// A file that has just been written or read is often opened by a virus scanner at once: while an
// action on it fails for that, it is tried again, a tenth of a second apart.
template <typename Action>
platform::Status TryPatiently(int attempts, Action action) {
  constexpr std::int32_t kIntervalMs = 100;
  const platform::Ports& ports = platform::CurrentPorts();
  for (int attempt = 1;; ++attempt) {
    const platform::Status status = action();
    if (status || !ports.files->MeansBusy(status.code) || attempt == attempts) return status;
    ports.clock->Sleep(kIntervalMs);
  }
}

}  // namespace tmw
