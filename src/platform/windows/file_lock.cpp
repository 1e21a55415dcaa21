#include "platform/factories.h"

#include <utility>

#include "platform/windows/handles.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "ports/file_lock.h"

namespace platform {
namespace {

using ports::FileLockResult;
using ports::FileLockVerdict;

// The locked byte lies where no file has content, since locks of this system block reading.
OVERLAPPED LockedByte() {
  OVERLAPPED place = {};
  place.Offset = 0xFFFFFFFE;
  place.OffsetHigh = 0x7FFFFFFF;
  return place;
}

ports::SystemCode Lock(HANDLE file, DWORD flags) {
  OVERLAPPED place = LockedByte();
  if (LockFileEx(file, flags | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != 0) return 0;
  return LastError();
}

// Closing the handle releases the lock.
class WindowsFileLock final : public ports::FileLock {
 public:
  explicit WindowsFileLock(UniqueFileHandle file) : file_(std::move(file)) {}

 private:
  UniqueFileHandle file_;
};

ports::Outcome<FileLockResult> Refused(ports::SystemCode code) {
  if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND)
    return FileLockResult::Answer(FileLockVerdict::kMissing);
  if (code == ERROR_ACCESS_DENIED) return FileLockResult::Answer(FileLockVerdict::kForbidden);
  return ports::Outcome<FileLockResult>::Failure(code);
}

}  // namespace

class WindowsFileLocks final : public ports::FileLocks {
 public:
  ports::Outcome<FileLockResult> TryLock(const std::string& path,
                                         ports::FileLockMode mode) override {
    UniqueFileHandle file(CreateFileW(ToWide(path).c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return Refused(LastError());
    const bool wants_all = mode == ports::FileLockMode::kExclusive;
    const ports::SystemCode code = Lock(file.Get(), wants_all ? LOCKFILE_EXCLUSIVE_LOCK : 0);
    if (code == 0) {
      return FileLockResult::Answer(FileLockVerdict::kLocked,
                                    std::make_unique<WindowsFileLock>(std::move(file)));
    }
    if (code != ERROR_LOCK_VIOLATION && code != ERROR_IO_PENDING) return Refused(code);
    const bool is_shareable = wants_all && Lock(file.Get(), 0) == 0;
    return FileLockResult::Answer(is_shareable ? FileLockVerdict::kHeldShared
                                               : FileLockVerdict::kHeldExclusively);
  }
};

std::unique_ptr<ports::FileLocks> MakeFileLocks() {
  return std::make_unique<WindowsFileLocks>();
}

}  // namespace platform
