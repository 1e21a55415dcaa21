#pragma once

#include <cstdint>

#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace tmw {

// A file that has just been written or read is often opened by a virus scanner at once: an action
// that fails for this reason is repeated every tenth of a second.
template <typename Action>
ports::Status TryPatiently(int attempts, Action action) {
  constexpr std::int32_t kIntervalMs = 100;
  const ports::Ports& ports = ports::CurrentPorts();
  for (int attempt = 1;; ++attempt) {
    const ports::Status status = action();
    if (status || !ports.files->MeansBusy(status.code) || attempt == attempts) return status;
    ports.clock->Sleep(kIntervalMs);
  }
}

}  // namespace tmw
