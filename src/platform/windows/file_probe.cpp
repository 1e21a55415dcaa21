#include "ports/file_probe.h"

#include "platform/factories.h"
#include "platform/windows/file_holders.h"
#include "platform/windows/handles.h"
#include "platform/windows/native_path.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "platform/windows/writable_for_now.h"

namespace platform {
namespace {

using ports::FileFinding;
using ports::Hindrance;

// The deleting right alone does not show a running program: its file can be opened for deletion and
// then not be deleted.
ports::Status TryToOpenAlone(const std::wstring& path) {
  const UniqueFileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, 0, nullptr,
                                          OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  return file ? ports::Status::Success() : ports::Status::Failure(LastError());
}

class WindowsFileProbe final : public ports::FileProbe {
 public:
  // A running program keeps its name, too: both replacements are refused.
  FileFinding Examine(const std::string& path, ports::Replacement /*replacement*/) override {
    const std::wstring native = NativePath(path);
    const DWORD attributes = GetFileAttributesW(native.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
      const ports::SystemCode code = LastError();
      const bool is_missing = code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND;
      return is_missing ? FileFinding() : FileFinding{MeaningOf(code), code};
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return {Hindrance::kFolder, 0};
    if ((attributes & FILE_ATTRIBUTE_DEVICE) != 0) return {Hindrance::kOther, 0};
    ports::Status opened = TryToOpenAlone(native);
    if (!opened && opened.code == ERROR_ACCESS_DENIED) {
      const WritableForNow writable(native);
      if (writable.HasChanged()) opened = TryToOpenAlone(native);
    }
    return opened ? FileFinding() : FileFinding{MeaningOf(opened.code), opened.code};
  }

  Hindrance MeaningOf(ports::SystemCode code) const override {
    switch (code) {
      case ERROR_ACCESS_DENIED:
      case ERROR_PRIVILEGE_NOT_HELD:
        return Hindrance::kForbidden;
      case ERROR_WRITE_PROTECT:
        return Hindrance::kProtected;
      case ERROR_SHARING_VIOLATION:
      case ERROR_LOCK_VIOLATION:
      case ERROR_USER_MAPPED_FILE:
      case ERROR_DELETE_PENDING:
        return Hindrance::kHeld;
      default:
        return Hindrance::kFailed;
    }
  }

  std::vector<std::string> Holders(const std::string& path) override {
    return HoldersOf(path, RestartManager::OfSystem());
  }

  ports::Outcome<ports::DiskSpace> SpaceOf(const std::string& folder) override {
    using Result = ports::Outcome<ports::DiskSpace>;
    const std::wstring native = NativePath(folder);
    ULARGE_INTEGER free{};
    if (GetDiskFreeSpaceExW(native.c_str(), &free, nullptr, nullptr) == FALSE)
      return Result::Failure(LastError());
    wchar_t disk[MAX_PATH + 1] = {};
    if (GetVolumePathNameW(native.c_str(), disk, MAX_PATH) == FALSE)
      return Result::Failure(LastError());
    return Result::Success(
        {FromWide(static_cast<const wchar_t*>(disk)), static_cast<std::int64_t>(free.QuadPart)});
  }

  // Where the registration tool of 32-bit components writes.
  ports::Status MayRegister() override {
    HKEY key = nullptr;
    const LSTATUS code = RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes", 0,
                                       KEY_CREATE_SUB_KEY | KEY_SET_VALUE | KEY_WOW64_32KEY, &key);
    if (code != ERROR_SUCCESS) return ports::Status::Failure(code);
    RegCloseKey(key);
    return ports::Status::Success();
  }
};

}  // namespace

std::unique_ptr<ports::FileProbe> MakeFileProbe() {
  return std::make_unique<WindowsFileProbe>();
}

}  // namespace platform
