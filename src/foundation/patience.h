#pragma once

#include <cstdint>
#include <string>

#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace tmw {

// As long as a scanner may take for a file of the product: five seconds.
inline constexpr int kPatientAttempts = 50;

// A file that has just been written or read is often opened by a virus scanner at once; one that is
// deleted meanwhile keeps its name until the scanner lets go. An action that fails for this reason
// is repeated every tenth of a second. The action gives a Status or an Outcome.
template <typename Action>
auto TryPatiently(int attempts, Action action) {
  constexpr std::int32_t kIntervalMs = 100;
  const ports::Ports& ports = ports::CurrentPorts();
  for (int attempt = 1;; ++attempt) {
    auto result = action();
    if (result || !ports.files->MeansBusy(result.code) || attempt == attempts) return result;
    ports.clock->Sleep(kIntervalMs);
  }
}

inline auto OpenPatiently(const std::string& path, ports::FileMode mode) {
  return TryPatiently(kPatientAttempts,
                      [&] { return ports::CurrentPorts().files->Open(path, mode); });
}

}  // namespace tmw
