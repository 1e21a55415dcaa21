#include "platform/file_lock.h"

#include <utility>

#include "platform/unique_handle.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"

namespace platform {
namespace {

struct FileHandleTraits {
  using Type = HANDLE;
  static Type Invalid() { return INVALID_HANDLE_VALUE; }
  static void Close(Type handle) { CloseHandle(handle); }
};
using FileHandle = UniqueHandle<FileHandleTraits>;

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
class WindowsFileLock final : public FileLock {
 public:
  explicit WindowsFileLock(FileHandle file) : file_(std::move(file)) {}

 private:
  FileHandle file_;
};

Outcome<FileLockResult> Answer(FileLockVerdict verdict) {
  return Outcome<FileLockResult>::Success({verdict, nullptr});
}

Outcome<FileLockResult> Failure(DWORD code) {
  if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND)
    return Answer(FileLockVerdict::kMissing);
  if (code == ERROR_ACCESS_DENIED) return Answer(FileLockVerdict::kForbidden);
  return Outcome<FileLockResult>::Failure(static_cast<SystemCode>(code));
}

}  // namespace

class WindowsFileLocks final : public FileLocks {
 public:
  Outcome<FileLockResult> TryLock(const std::string& path, FileLockMode mode) override {
    FileHandle file(CreateFileW(ToWide(path).c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return Failure(GetLastError());
    const bool wants_all = mode == FileLockMode::kExclusive;
    const DWORD code = Lock(file.Get(), wants_all ? LOCKFILE_EXCLUSIVE_LOCK : 0);
    if (code == 0) {
      return Outcome<FileLockResult>::Success(
          {FileLockVerdict::kLocked, std::make_unique<WindowsFileLock>(std::move(file))});
    }
    if (code != ERROR_LOCK_VIOLATION && code != ERROR_IO_PENDING) return Failure(code);
    const bool is_shareable = wants_all && Lock(file.Get(), 0) == 0;
    return Answer(is_shareable ? FileLockVerdict::kHeldShared : FileLockVerdict::kHeldExclusively);
  }
};

std::unique_ptr<FileLocks> MakeFileLocks() {
  return std::make_unique<WindowsFileLocks>();
}

}  // namespace platform
