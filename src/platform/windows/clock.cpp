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
};

}  // namespace

std::unique_ptr<ports::Clock> MakeClock() {
  return std::make_unique<WindowsClock>();
}

}  // namespace platform
