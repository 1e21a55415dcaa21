#pragma once

#include <memory>
#include <string>

#include "ports/outcome.h"

namespace ports {

enum class FileLockMode { kShared, kExclusive };

// Holds a lock until it is destroyed; the system releases it when the process dies.
class FileLock {
 public:
  virtual ~FileLock() = default;
};

enum class FileLockVerdict {
  kLocked,
  kHeldShared,       // an exclusive lock was requested and the file is locked for sharing
  kHeldExclusively,  // the file is locked exclusively
  kMissing,          // there is no such file
  kForbidden,        // the file may not be read
};

struct FileLockResult {
  FileLockVerdict verdict = FileLockVerdict::kLocked;
  std::unique_ptr<FileLock> lock;  // with kLocked only

  static Outcome<FileLockResult> Answer(FileLockVerdict verdict,
                                        std::unique_ptr<FileLock> lock = nullptr) {
    return Outcome<FileLockResult>::Success({verdict, std::move(lock)});
  }
};

// Advisory locks on whole existing files; two holders in one process exclude each other like two
// processes. Linux: flock on the file itself. Windows: a locked byte far behind the file's end.
class FileLocks {
 public:
  virtual ~FileLocks() = default;

  // Never waits. A lock that cannot be had is a verdict, not a failure.
  virtual Outcome<FileLockResult> TryLock(const std::string& path, FileLockMode mode) = 0;
};

}  // namespace ports
