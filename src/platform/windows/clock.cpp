#include "platform/factories.h"

#include "platform/windows/windows_headers.h"
#include "ports/clock.h"

namespace platform {
namespace {

class WindowsClock final : public ports::Clock {
 public:
  void Sleep(std::int32_t milliseconds) override {
    if (milliseconds > 0) ::Sleep(static_cast<DWORD>(milliseconds));
  }

  std::int64_t TickCount() override { return static_cast<std::int64_t>(GetTickCount64()); }

  // Not by the C library, whose time ends in 2038 in 32-bit programs.
  std::int64_t UtcSeconds() override {
    constexpr std::int64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;  // seconds
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const std::int64_t ticks = std::int64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
    return ticks / kTicksPerSecond - kFrom1601To1970;
  }
};

}  // namespace

std::unique_ptr<ports::Clock> MakeClock() {
  return std::make_unique<WindowsClock>();
}

}  // namespace platform
