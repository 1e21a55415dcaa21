#pragma once

#include <memory>
#include <string>

#include "ports/outcome.h"

namespace ports {

enum class FileLockMode { kShared, kExclusive };

// Holds a lock until it is destroyed; the system frees it when the process dies.
class FileLock {
 public:
  virtual ~FileLock() = default;
};

enum class FileLockVerdict {
  kLocked,
  kHeldShared,       // an exclusive lock was asked for and somebody shares the file
  kHeldExclusively,  // somebody has the file to himself
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

// Advisory locks on whole existing files; holders inside one process count like holders in two.
// Linux: flock on the file itself. Windows: a locked byte far behind the file's end.
class FileLocks {
 public:
  virtual ~FileLocks() = default;

  // Never waits. Only what is not a verdict is a failure.
  virtual Outcome<FileLockResult> TryLock(const std::string& path, FileLockMode mode) = 0;
};

}  // namespace ports
