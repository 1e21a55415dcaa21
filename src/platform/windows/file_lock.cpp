#include "platform/factories.h"

#include <utility>

#include "foundation/unique_handle.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"

namespace platform {
namespace {

struct FileHandleTraits {
  using Type = HANDLE;
  static Type Invalid() { return INVALID_HANDLE_VALUE; }
  static void Close(Type handle) { CloseHandle(handle); }
};
using FileHandle = tmw::UniqueHandle<FileHandleTraits>;

// The locked byte lies where no file has content: locks of this system hinder reading.
OVERLAPPED LockedByte() {
  OVERLAPPED place = {};
  place.Offset = 0xFFFFFFFE;
  place.OffsetHigh = 0x7FFFFFFF;
  return place;
}

DWORD Lock(HANDLE file, DWORD flags) {
  OVERLAPPED place = LockedByte();
  if (LockFileEx(file, flags | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != 0) return 0;
  return GetLastError();
}

// The handle's close frees the lock.
class WindowsFileLock final : public ports::FileLock {
 public:
  explicit WindowsFileLock(FileHandle file) : file_(std::move(file)) {}

 private:
  FileHandle file_;
};

ports::Outcome<ports::FileLockResult> Answer(ports::FileLockVerdict verdict) {
  return ports::Outcome<ports::FileLockResult>::Success({verdict, nullptr});
}

ports::Outcome<ports::FileLockResult> Failure(DWORD code) {
  if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND)
    return Answer(ports::FileLockVerdict::kMissing);
  if (code == ERROR_ACCESS_DENIED) return Answer(ports::FileLockVerdict::kForbidden);
  return ports::Outcome<ports::FileLockResult>::Failure(static_cast<ports::SystemCode>(code));
}

}  // namespace

class WindowsFileLocks final : public ports::FileLocks {
 public:
  ports::Outcome<ports::FileLockResult> TryLock(const std::string& path,
                                                ports::FileLockMode mode) override {
    FileHandle file(CreateFileW(ToWide(path).c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return Failure(GetLastError());
    const bool wants_all = mode == ports::FileLockMode::kExclusive;
    const DWORD code = Lock(file.Get(), wants_all ? LOCKFILE_EXCLUSIVE_LOCK : 0);
    if (code == 0) {
      return ports::Outcome<ports::FileLockResult>::Success(
          {ports::FileLockVerdict::kLocked, std::make_unique<WindowsFileLock>(std::move(file))});
    }
    if (code != ERROR_LOCK_VIOLATION && code != ERROR_IO_PENDING) return Failure(code);
    const bool is_shareable = wants_all && Lock(file.Get(), 0) == 0;
    return Answer(is_shareable ? ports::FileLockVerdict::kHeldShared
                               : ports::FileLockVerdict::kHeldExclusively);
  }
};

std::unique_ptr<ports::FileLocks> MakeFileLocks() {
  return std::make_unique<WindowsFileLocks>();
}

}  // namespace platform
