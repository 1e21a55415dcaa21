#include "platform/factories.h"

#include <utility>

#include "platform/windows/handles.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "ports/named_mutex.h"

namespace platform {
namespace {

static_assert(ERROR_ALREADY_EXISTS == 183);

class WindowsNamedMutex final : public ports::NamedMutex {
 public:
  explicit WindowsNamedMutex(UniqueKernelHandle handle) : handle_(std::move(handle)) {}
  WindowsNamedMutex(const WindowsNamedMutex&) = delete;
  WindowsNamedMutex& operator=(const WindowsNamedMutex&) = delete;
  // Releasing a mutex that this thread does not own fails harmlessly.
  ~WindowsNamedMutex() override { ReleaseMutex(handle_.Get()); }

 private:
  UniqueKernelHandle handle_;
};

class WindowsNamedMutexes final : public ports::NamedMutexes {
 public:
  ports::Status Prepare() override { return ports::Status::Success(); }
  std::string Place() const override { return {}; }

  ports::Outcome<ports::CreatedMutex> Create(const std::string& name, bool initial_owner) override {
    using Result = ports::Outcome<ports::CreatedMutex>;
    const std::string ansi_name = ToAnsi(name);
    UniqueKernelHandle handle(
        CreateMutexA(nullptr, initial_owner ? TRUE : FALSE, ansi_name.c_str()));
    const ports::SystemCode code = LastError();
    if (!handle) return Result::Failure(code);
    ports::CreatedMutex created;
    created.mutex = std::make_unique<WindowsNamedMutex>(std::move(handle));
    created.already_existed = code == ERROR_ALREADY_EXISTS;
    return Result::Success(std::move(created));
  }
};

}  // namespace

std::unique_ptr<ports::NamedMutexes> MakeNamedMutexes() {
  return std::make_unique<WindowsNamedMutexes>();
}

}  // namespace platform
