#include "platform/factories.h"

#include <type_traits>

#include "platform/windows/handles.h"
#include "platform/windows/native_path.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "ports/companion_library.h"

namespace platform {
namespace {

std::string InOwnFolder(const std::string& name) {
  std::wstring own(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, own.data(), static_cast<DWORD>(own.size()));
    if (length < own.size()) {
      own.resize(length);
      break;
    }
    own.resize(own.size() * 2);
  }
  return FromWide(own.substr(0, own.find_last_of(L'\\') + 1)) + name;
}

class WindowsCompanionLibrary final : public ports::CompanionLibrary {
 public:
  explicit WindowsCompanionLibrary(std::string path) : path_(std::move(path)) {}
  WindowsCompanionLibrary(const WindowsCompanionLibrary&) = delete;
  WindowsCompanionLibrary& operator=(const WindowsCompanionLibrary&) = delete;
  ~WindowsCompanionLibrary() override { Unload(); }

  ports::Outcome<const ports::EntryPoints*> Load() override {
    using Result = ports::Outcome<const ports::EntryPoints*>;
    if (library_ != nullptr) return Result::Success(&entries_);
    library_ = LoadLibraryExW(ToWide(path_).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library_ == nullptr) return Result::Failure(platform::LastError());
    bool is_whole = true;
    ports::ForEachEntryPoint(entries_, [&](const char* name, auto& entry) {
      // Through void*: the compiler warns about a direct cast.
      auto* const found = reinterpret_cast<void*>(GetProcAddress(library_, name));
      entry = reinterpret_cast<std::remove_reference_t<decltype(entry)>>(found);
      is_whole = is_whole && entry != nullptr;
    });
    if (is_whole) return Result::Success(&entries_);
    Unload();
    return Result::Failure(ERROR_PROC_NOT_FOUND);
  }

  std::string Path() const override { return path_; }
  std::string NarrowPath(const std::string& path) const override { return AnsiPath(path); }
  ports::SystemCode LastError() const override { return platform::LastError(); }

 private:
  void Unload() {
    if (library_ != nullptr) FreeLibrary(library_);
    library_ = nullptr;
  }

  std::string path_;
  HMODULE library_ = nullptr;
  ports::EntryPoints entries_{};
};

}  // namespace

std::unique_ptr<ports::CompanionLibrary> MakeCompanionLibrary(const std::string& path) {
  return std::make_unique<WindowsCompanionLibrary>(path.empty() ? InOwnFolder("UnTmz.dll") : path);
}

}  // namespace platform
