#include "platform/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <utility>

#include "platform/unique_handle.h"

namespace platform {
namespace {

struct DescriptorTraits {
  using Type = int;
  static Type Invalid() { return -1; }
  static void Close(Type descriptor) { ::close(descriptor); }
};
using Descriptor = UniqueHandle<DescriptorTraits>;

// All holders of one file in this process share one descriptor. Closing any descriptor of a file
// drops every record lock that the process has on it, the database engine's own ones included, so
// it is closed with the last holder only.
struct HeldFile {
  Descriptor descriptor{-1};
  int sharers = 0;
  bool is_exclusive = false;
};

using FileKey = std::pair<dev_t, ino_t>;

std::map<FileKey, HeldFile>& HeldFiles() {
  static std::map<FileKey, HeldFile> files;
  return files;
}

class LinuxFileLock final : public FileLock {
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

Outcome<FileLockResult> Answer(FileLockVerdict verdict) {
  return Outcome<FileLockResult>::Success({verdict, nullptr});
}

Outcome<FileLockResult> Refused(SystemCode code) {
  if (code == ENOENT || code == ENOTDIR) return Answer(FileLockVerdict::kMissing);
  if (code == EACCES || code == EPERM) return Answer(FileLockVerdict::kForbidden);
  return Outcome<FileLockResult>::Failure(code);
}

}  // namespace

class LinuxFileLocks final : public FileLocks {
 public:
  Outcome<FileLockResult> TryLock(const std::string& path, FileLockMode mode) override {
    const bool wants_all = mode == FileLockMode::kExclusive;
    struct stat facts = {};
    if (::stat(path.c_str(), &facts) != 0) return Refused(errno);
    const FileKey key{facts.st_dev, facts.st_ino};
    const auto held = HeldFiles().find(key);
    if (held != HeldFiles().end()) {
      if (held->second.is_exclusive) return Answer(FileLockVerdict::kHeldExclusively);
      if (wants_all) return Answer(FileLockVerdict::kHeldShared);
      ++held->second.sharers;
      return Locked(key);
    }

    Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor) return Refused(errno);
    if (::flock(descriptor.Get(), (wants_all ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK) return Outcome<FileLockResult>::Failure(errno);
      const bool is_shareable = wants_all && ::flock(descriptor.Get(), LOCK_SH | LOCK_NB) == 0;
      return Answer(is_shareable ? FileLockVerdict::kHeldShared
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
  static Outcome<FileLockResult> Locked(FileKey key) {
    return Outcome<FileLockResult>::Success(
        {FileLockVerdict::kLocked, std::make_unique<LinuxFileLock>(key)});
  }
};

std::unique_ptr<FileLocks> MakeFileLocks() {
  return std::make_unique<LinuxFileLocks>();
}

}  // namespace platform
