#include "transfer/attempts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "ports/clock.h"
#include "ports/front_end.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr std::int32_t kSlice = 100;                           // milliseconds
constexpr std::array<std::int32_t, 2> kPauses = {1000, 3000};  // before the further attempts

}  // namespace

Attempts::Attempts(ports::WaitHandler may_wait) : may_wait_(std::move(may_wait)) {}

bool Attempts::MayTryAgain(bool is_broken_off) {
  if (!is_broken_off || made_ == static_cast<int>(kPauses.size())) return false;
  const std::int32_t pause = kPauses[static_cast<std::size_t>(made_++)];
  for (std::int32_t waited = 0; waited < pause; waited += kSlice) {
    ports::CurrentPorts().clock->Sleep(kSlice);
    if (!may_wait_) {
      ports::CurrentPorts().front_end->RunPendingEvents();
    } else if (!may_wait_()) {
      return false;
    }
  }
  return true;
}

bool MeansBrokenOff(ports::SystemCode code) {
  constexpr std::array kCodes = {ports::kInternetTimeout, ports::kInternetNameNotResolved,
                                 ports::kInternetCannotConnect, ports::kInternetAborted,
                                 ports::kInternetReset};
  return std::find(kCodes.begin(), kCodes.end(), code) != kCodes.end();
}

}  // namespace tmw
