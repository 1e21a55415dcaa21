#include "platform/factories.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "platform/linux/descriptor.h"
#include "platform/linux/own_folder.h"
#include "ports/named_mutex.h"

namespace platform {
namespace {

// The sticky bit keeps clean-up of the runtime folder from removing a lock file that is held for
// long.
constexpr mode_t kLockFile = S_ISVTX | 0600;

class LockFile final : public ports::NamedMutex {
 public:
  explicit LockFile(UniqueDescriptor file) : file_(std::move(file)) {}

 private:
  UniqueDescriptor file_;  // closing it releases the lock
};

// The user's runtime folder or, without one, a private folder in the temporary folder. All programs
// of one user must find the same place, whatever environment they were started with.
ports::Outcome<std::string> LockFolder() {
  using Result = ports::Outcome<std::string>;
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
  const ports::SystemCode code = MakeOwnFolder(folder);
  return code == 0 ? Result::Success(folder) : Result::Failure(code);
}

class LinuxNamedMutexes final : public ports::NamedMutexes {
 public:
  ports::Outcome<ports::CreatedMutex> Create(const std::string& name,
                                             bool /*initial_owner*/) override {
    using Result = ports::Outcome<ports::CreatedMutex>;
    const std::string own_name = name.substr(name.rfind('\\') + 1);
    if (own_name.empty() || own_name.find('/') != std::string::npos) return Result::Failure(EINVAL);
    const auto folder = LockFolder();
    if (!folder) return Result::Failure(folder.code);

    // Lock files are never deleted: another process may just be opening the one that would be
    // deleted.
    const std::string path = folder.value + "/" + own_name + ".lock";
    UniqueDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) return Result::Failure(errno);
    if (fchmod(file.Get(), kLockFile) != 0) return Result::Failure(errno);
    int locked = 0;
    do {
      locked = flock(file.Get(), LOCK_EX | LOCK_NB);
    } while (locked != 0 && errno == EINTR);
    if (locked != 0 && errno != EWOULDBLOCK) return Result::Failure(errno);
    ports::CreatedMutex created;
    created.mutex = std::make_unique<LockFile>(std::move(file));
    created.already_existed = locked != 0;
    return Result::Success(std::move(created));
  }
};

}  // namespace

std::unique_ptr<ports::NamedMutexes> MakeNamedMutexes() {
  return std::make_unique<LinuxNamedMutexes>();
}

}  // namespace platform
