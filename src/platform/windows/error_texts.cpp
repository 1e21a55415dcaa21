#include "platform/factories.h"

#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "ports/error_texts.h"

namespace platform {
namespace {

// MinGW's headers lack both.
constexpr ports::SystemCode kElevationRequired = 740;
constexpr ports::SystemCode kDiskQuotaExceeded = 1295;

class WindowsErrorTexts final : public ports::ErrorTexts {
 public:
  std::optional<Module> FindLoadedModule(const std::string& name) override {
    HMODULE module = GetModuleHandleW(ToWide(name).c_str());
    if (module == nullptr) return std::nullopt;
    return reinterpret_cast<Module>(module);
  }

  std::string Format(ports::SystemCode code, Module module) override {
    const DWORD from = module != 0 ? FORMAT_MESSAGE_FROM_HMODULE : FORMAT_MESSAGE_FROM_SYSTEM;
    wchar_t* buffer = nullptr;
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | from,
                       reinterpret_cast<HMODULE>(module), static_cast<DWORD>(code), 0,
                       reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    if (length == 0) return {};
    std::string text = FromWide({buffer, length});
    LocalFree(buffer);
    return text;
  }

  ports::CodeMeaning MeaningOf(ports::SystemCode code) const override {
    switch (code) {
      case ERROR_DISK_FULL:
      case ERROR_HANDLE_DISK_FULL:
      case kDiskQuotaExceeded:
        return ports::CodeMeaning::kNoSpace;
      case ERROR_ACCESS_DENIED:
      case ERROR_WRITE_PROTECT:
      case ERROR_PRIVILEGE_NOT_HELD:
      case kElevationRequired:
      case ERROR_CANCELLED:  // the user has declined the elevation
        return ports::CodeMeaning::kNoRights;
      case ERROR_SHARING_VIOLATION:
      case ERROR_LOCK_VIOLATION:
      case ERROR_USER_MAPPED_FILE:
        return ports::CodeMeaning::kHeld;
      default:
        return ports::CodeMeaning::kOther;
    }
  }
};

}  // namespace

std::unique_ptr<ports::ErrorTexts> MakeErrorTexts() {
  return std::make_unique<WindowsErrorTexts>();
}

}  // namespace platform
