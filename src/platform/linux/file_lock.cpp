#include "platform/factories.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <utility>

#include "platform/linux/descriptor.h"
#include "ports/file_lock.h"

namespace platform {
namespace {

using ports::FileLockResult;
using ports::FileLockVerdict;

// All holders of one file in this process share one descriptor, which is closed with the last of
// them.
struct HeldFile {
  UniqueDescriptor descriptor;
  int sharers = 0;
  bool is_exclusive = false;
};

using FileKey = std::pair<dev_t, ino_t>;

std::map<FileKey, HeldFile>& HeldFiles() {
  static std::map<FileKey, HeldFile> files;
  return files;
}

class LinuxFileLock final : public ports::FileLock {
 public:
  explicit LinuxFileLock(FileKey key) : key_(key) {}
  LinuxFileLock(const LinuxFileLock&) = delete;
  LinuxFileLock& operator=(const LinuxFileLock&) = delete;
  ~LinuxFileLock() override {
    const auto found = HeldFiles().find(key_);
    if (found->second.sharers > 1) {
      --found->second.sharers;
    } else {
      HeldFiles().erase(found);
    }
  }

 private:
  FileKey key_;
};

ports::Outcome<FileLockResult> Refused(ports::SystemCode code) {
  if (code == ENOENT || code == ENOTDIR) return FileLockResult::Answer(FileLockVerdict::kMissing);
  if (code == EACCES || code == EPERM) return FileLockResult::Answer(FileLockVerdict::kForbidden);
  return ports::Outcome<FileLockResult>::Failure(code);
}

}  // namespace

class LinuxFileLocks final : public ports::FileLocks {
 public:
  ports::Outcome<FileLockResult> TryLock(const std::string& path,
                                         ports::FileLockMode mode) override {
    const bool wants_all = mode == ports::FileLockMode::kExclusive;
    UniqueDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor) return Refused(errno);
    // Of what was opened: the name may stand for another file already.
    struct stat facts = {};
    if (::fstat(descriptor.Get(), &facts) != 0) return Refused(errno);
    const FileKey key{facts.st_dev, facts.st_ino};
    const auto held = HeldFiles().find(key);
    if (held != HeldFiles().end()) {
      if (held->second.is_exclusive)
        return FileLockResult::Answer(FileLockVerdict::kHeldExclusively);
      if (wants_all) return FileLockResult::Answer(FileLockVerdict::kHeldShared);
      ++held->second.sharers;
      return Locked(key);
    }
    if (::flock(descriptor.Get(), (wants_all ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK) return ports::Outcome<FileLockResult>::Failure(errno);
      const bool is_shareable = wants_all && ::flock(descriptor.Get(), LOCK_SH | LOCK_NB) == 0;
      return FileLockResult::Answer(is_shareable ? FileLockVerdict::kHeldShared
                                                 : FileLockVerdict::kHeldExclusively);
    }
    HeldFile file;
    file.descriptor = std::move(descriptor);
    file.sharers = 1;
    file.is_exclusive = wants_all;
    HeldFiles().emplace(key, std::move(file));
    return Locked(key);
  }

 private:
  static ports::Outcome<FileLockResult> Locked(FileKey key) {
    return FileLockResult::Answer(FileLockVerdict::kLocked, std::make_unique<LinuxFileLock>(key));
  }
};

std::unique_ptr<ports::FileLocks> MakeFileLocks() {
  return std::make_unique<LinuxFileLocks>();
}

}  // namespace platform
