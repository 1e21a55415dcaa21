#include "platform/factories.h"

#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "ports/error_texts.h"

namespace platform {
namespace {

class WindowsErrorTexts final : public ports::ErrorTexts {
 public:
  std::optional<Module> FindLoadedModule(const std::string& name) override {
    HMODULE module = GetModuleHandleA(ToAnsi(name).c_str());
    if (module == nullptr) return std::nullopt;
    return reinterpret_cast<Module>(module);
  }

  std::string Format(ports::SystemCode code, Module module) override {
    const DWORD from = module != 0 ? FORMAT_MESSAGE_FROM_HMODULE : FORMAT_MESSAGE_FROM_SYSTEM;
    char* buffer = nullptr;
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | from,
                       reinterpret_cast<HMODULE>(module), static_cast<DWORD>(code), 0,
                       reinterpret_cast<char*>(&buffer), 0, nullptr);
    if (length == 0) return {};
    std::string text = FromAnsi({buffer, length});
    LocalFree(buffer);
    return text;
  }
};

}  // namespace

std::unique_ptr<ports::ErrorTexts> MakeErrorTexts() {
  return std::make_unique<WindowsErrorTexts>();
}

}  // namespace platform
