#include "platform/factories.h"

#include <cerrno>
#include <ctime>

#include "ports/clock.h"

namespace platform {
namespace {

constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;

class LinuxClock final : public ports::Clock {
 public:
  void Sleep(std::int32_t milliseconds) override {
    if (milliseconds <= 0) return;
    timespec rest{};
    rest.tv_sec = milliseconds / 1000;
    rest.tv_nsec = (milliseconds % 1000) * kNanosecondsPerMillisecond;
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
  }

  std::int64_t TickCount() override {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / kNanosecondsPerMillisecond;
  }

  std::int64_t UtcSeconds() override { return std::int64_t{std::time(nullptr)}; }
};

}  // namespace

std::unique_ptr<ports::Clock> MakeClock() {
  return std::make_unique<LinuxClock>();
}

}  // namespace platform
