#include "platform/named_mutex.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "platform/linux/descriptor.h"

namespace platform {
namespace {

constexpr mode_t kPrivateFolder = 0700;
// With the sticky bit set, clean-up of the run-time folder leaves a long-held lock file alone.
constexpr mode_t kLockFile = S_ISVTX | 0600;

class LockFile final : public NamedMutex {
 public:
  explicit LockFile(UniqueDescriptor file) : file_(std::move(file)) {}

 private:
  UniqueDescriptor file_;  // its lock goes with it
};

// A folder that nobody else can put a file into: 0, or the code that says why not.
SystemCode CheckOwnFolder(const std::string& folder) {
  struct stat facts {};
  if (lstat(folder.c_str(), &facts) != 0) return errno;
  if (!S_ISDIR(facts.st_mode)) return ENOTDIR;
  const bool is_own = facts.st_uid == geteuid() && (facts.st_mode & (S_IWGRP | S_IWOTH)) == 0;
  return is_own ? 0 : EPERM;
}

// The user's run-time folder; where there is none, a folder of his own in the temporary one. All
// programs of one user have to come to the same place, whatever environment they were given.
Outcome<std::string> LockFolder() {
  using Result = Outcome<std::string>;
  const std::string user = std::to_string(geteuid());
  const char* const given = std::getenv("XDG_RUNTIME_DIR");
  for (const std::string& folder :
       {std::string(given == nullptr ? "" : given), "/run/user/" + user}) {
    if (folder.starts_with('/') && CheckOwnFolder(folder) == 0) return Result::Success(folder);
  }
  const char* const temporary = std::getenv("TMPDIR");
  const std::string folder =
      std::string(temporary == nullptr || *temporary != '/' ? "/tmp" : temporary) + "/tamrin-" +
      user;
  if (mkdir(folder.c_str(), kPrivateFolder) != 0 && errno != EEXIST) return Result::Failure(errno);
  const SystemCode code = CheckOwnFolder(folder);
  return code == 0 ? Result::Success(folder) : Result::Failure(code);
}

class LinuxNamedMutexes final : public NamedMutexes {
 public:
  Outcome<CreatedMutex> Create(const std::string& name, bool /*initial_owner*/) override {
    using Result = Outcome<CreatedMutex>;
    const std::string own_name = name.substr(name.rfind('\\') + 1);
    if (own_name.empty() || own_name.find('/') != std::string::npos) return Result::Failure(EINVAL);
    const auto folder = LockFolder();
    if (!folder.ok) return Result::Failure(folder.code);

    // Lock files are never deleted: another process could be about to lock the deleted one.
    const std::string path = folder.value + "/" + own_name + ".lock";
    UniqueDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) return Result::Failure(errno);
    if (fchmod(file.Get(), kLockFile) != 0) return Result::Failure(errno);
    int locked = 0;
    do {
      locked = flock(file.Get(), LOCK_EX | LOCK_NB);
    } while (locked != 0 && errno == EINTR);
    if (locked != 0 && errno != EWOULDBLOCK) return Result::Failure(errno);
    CreatedMutex created;
    created.mutex = std::make_unique<LockFile>(std::move(file));
    created.already_existed = locked != 0;
    return Result::Success(std::move(created));
  }
};

}  // namespace

std::unique_ptr<NamedMutexes> MakeNamedMutexes() {
  return std::make_unique<LinuxNamedMutexes>();
}

}  // namespace platform
