#include "ports/power.h"

#include "platform/factories.h"
#include "platform/windows/windows_headers.h"

namespace platform {
namespace {

class WindowsStayAwake final : public ports::StayAwake {
 public:
  WindowsStayAwake() = default;
  WindowsStayAwake(const WindowsStayAwake&) = delete;
  WindowsStayAwake& operator=(const WindowsStayAwake&) = delete;
  ~WindowsStayAwake() override { SetThreadExecutionState(ES_CONTINUOUS); }
};

class WindowsPower final : public ports::Power {
 public:
  std::unique_ptr<ports::StayAwake> KeepAwake(const std::string& /*who*/,
                                              const std::string& /*why*/) override {
    if (SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED) == 0) return nullptr;
    return std::make_unique<WindowsStayAwake>();
  }
};

}  // namespace

std::unique_ptr<ports::Power> MakePower() {
  return std::make_unique<WindowsPower>();
}

}  // namespace platform
