#include "ports/file_probe.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>

#include "platform/factories.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/file_holders.h"

namespace platform {
namespace {

using ports::FileFinding;
using ports::Hindrance;

constexpr std::uint64_t kUnchangeable = STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND;

bool IsLocked(int descriptor) {
  if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return true;
  static_cast<void>(flock(descriptor, LOCK_UN));
  struct flock whole {};
  whole.l_type = F_WRLCK;
  whole.l_whence = SEEK_SET;
  return fcntl(descriptor, F_OFD_GETLK, &whole) == 0 && whole.l_type != F_UNLCK;
}

// In a folder with the sticky bit a file belongs to its owner, whoever may write to the folder.
bool IsSomebodyElses(const std::string& path, uid_t owner) {
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  struct stat facts {};
  return geteuid() != 0 && stat(folder.c_str(), &facts) == 0 && (facts.st_mode & S_ISVTX) != 0 &&
         owner != geteuid() && facts.st_uid != geteuid();
}

class LinuxFileProbe final : public ports::FileProbe {
 public:
  FileFinding Examine(const std::string& path, ports::Replacement replacement) override {
    struct statx facts {};
    if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &facts) != 0) {
      const ports::SystemCode code = errno;
      if (code == ENOENT || code == ENOTDIR) return {};
      return {MeaningOf(code), code};
    }
    // A link itself is replaced, wherever it leads.
    if (S_ISLNK(facts.stx_mode)) return {};
    if (S_ISDIR(facts.stx_mode)) return {Hindrance::kFolder, 0};
    if (!S_ISREG(facts.stx_mode)) return {Hindrance::kOther, 0};
    if ((facts.stx_attributes & kUnchangeable) != 0) return {Hindrance::kProtected, EPERM};
    if ((facts.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) return {Hindrance::kFailed, EBUSY};
    if (IsSomebodyElses(path, facts.stx_uid)) return {Hindrance::kForbidden, EPERM};
    return ExamineContent(path, replacement);
  }

  Hindrance MeaningOf(ports::SystemCode code) const override {
    switch (code) {
      case EACCES:
        return Hindrance::kForbidden;
      case EPERM:
      case EROFS:
        return Hindrance::kProtected;
      case EBUSY:
      case ETXTBSY:
        return Hindrance::kHeld;
      case EISDIR:
        return Hindrance::kFolder;
      default:
        return Hindrance::kFailed;
    }
  }

  std::vector<std::string> Holders(const std::string& path) override { return HoldersOf(path); }

  ports::Outcome<ports::DiskSpace> SpaceOf(const std::string& folder) override {
    using Result = ports::Outcome<ports::DiskSpace>;
    struct stat facts {};
    struct statvfs space {};
    if (stat(folder.c_str(), &facts) != 0 || statvfs(folder.c_str(), &space) != 0)
      return Result::Failure(errno);
    return Result::Success(
        {std::to_string(facts.st_dev), static_cast<std::int64_t>(space.f_bavail * space.f_frsize)});
  }

  ports::Status MayRegister() override { return ports::Status::Success(); }

 private:
  FileFinding ExamineContent(const std::string& path, ports::Replacement replacement) const {
    constexpr int kFlags = O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY;
    UniqueDescriptor descriptor(open(path.c_str(), O_WRONLY | kFlags));
    if (!descriptor) {
      const ports::SystemCode code = errno;
      const bool is_running = code == ETXTBSY;
      if (is_running && replacement == ports::Replacement::kRemoval)
        return {Hindrance::kHeld, code};
      if (code != EACCES && !is_running) return {MeaningOf(code), code};
      // The folder's rights decide about a deletion; locks are seen by a reader too.
      descriptor = UniqueDescriptor(open(path.c_str(), O_RDONLY | kFlags));
    }
    if (descriptor && IsLocked(descriptor.Get())) return {Hindrance::kHeld, 0};
    return {};
  }
};

}  // namespace

std::unique_ptr<ports::FileProbe> MakeFileProbe() {
  return std::make_unique<LinuxFileProbe>();
}

}  // namespace platform
