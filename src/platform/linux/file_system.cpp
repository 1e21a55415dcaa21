#include "platform/factories.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string_view>

#include "platform/linux/descriptor.h"
#include "platform/linux/own_folder.h"
#include "ports/file_system.h"

namespace platform {
namespace {

constexpr mode_t kPermissionBits = 0777;
constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kNewCopyMode = 0600;
constexpr int kMostLinks = 40;  // as the kernel itself follows
constexpr mode_t kAllWriteBits = S_IWUSR | S_IWGRP | S_IWOTH;

struct FolderStreamTraits {
  using Type = DIR*;
  static Type Invalid() { return nullptr; }
  static void Close(Type folder) { closedir(folder); }
};
using FolderStream = tmw::UniqueHandle<FolderStreamTraits>;

// A system call would end a path at a zero character; the empty name makes it report a missing
// file.
const char* Name(const std::string& path) {
  return path.find('\0') == std::string::npos ? path.c_str() : "";
}

ports::Status StatusOf(int returned) {
  return returned == 0 ? ports::Status::Success() : ports::Status::Failure(errno);
}

// What the file system does not support, or this user may not set, is no failure.
ports::Status AsFarAsPossible(ports::Status status) {
  const bool is_refused = status.code == EPERM || status.code == EACCES ||
                          status.code == EOPNOTSUPP || status.code == ENOSYS ||
                          status.code == EINVAL || status.code == EOVERFLOW;
  return !status && is_refused ? ports::Status::Success() : status;
}

// A mount may decide on the rights alone. That is a failure only if it keeps the owner from what
// the mode would allow them: a program would not start.
ports::Status SetMode(const char* name, mode_t mode) {
  const ports::Status set = StatusOf(chmod(name, mode));
  if (set || !AsFarAsPossible(set)) return set;
  struct stat facts {};
  const bool is_enough = stat(name, &facts) == 0 && (mode & S_IRWXU & ~facts.st_mode) == 0;
  return is_enough ? ports::Status::Success() : set;
}

// Where others may write they could have planted files or links: only a folder of this user's own
// is used there.
ports::Outcome<std::string> PrivatePartOf(std::string folder) {
  std::string existing = ExistingPartOf(folder);
  if (!OthersMayWriteTo(existing)) return ports::Outcome<std::string>::Success(std::move(folder));
  folder = std::move(existing) + "/tamrin-" + std::to_string(geteuid());
  const ports::SystemCode code = MakeOwnFolder(folder);
  return {code == 0, code, std::move(folder)};
}

ports::FileKind KindOf(mode_t mode) {
  if (S_ISREG(mode)) return ports::FileKind::kFile;
  if (S_ISDIR(mode)) return ports::FileKind::kFolder;
  return ports::FileKind::kOther;
}

class LinuxFile final : public ports::File {
 public:
  explicit LinuxFile(UniqueDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

  ports::Outcome<std::size_t> Read(void* buffer, std::size_t length) override {
    for (;;) {
      const ssize_t count = read(descriptor_.Get(), buffer, length);
      if (count >= 0) return ports::Outcome<std::size_t>::Success(static_cast<std::size_t>(count));
      if (errno != EINTR) return ports::Outcome<std::size_t>::Failure(errno);
    }
  }

  ports::Status Write(const void* buffer, std::size_t length) override {
    const char* next = static_cast<const char*>(buffer);
    while (length > 0) {
      const ssize_t count = write(descriptor_.Get(), next, length);
      if (count < 0) {
        if (errno == EINTR) continue;
        return ports::Status::Failure(errno);
      }
      next += count;
      length -= static_cast<std::size_t>(count);
    }
    return ports::Status::Success();
  }

  ports::Status Flush() override { return StatusOf(fsync(descriptor_.Get())); }

  ports::Status Close() override {
    // The descriptor is closed even if the call was interrupted.
    const ports::Status status = StatusOf(close(descriptor_.Release()));
    return status.code == EINTR ? ports::Status::Success() : status;
  }

 private:
  UniqueDescriptor descriptor_;
};

// Removes "." and ".." from an absolute path without looking at the disk.
std::string WithoutDots(std::string_view path) {
  std::string result;
  std::size_t start = 0;
  while (start < path.size()) {
    std::size_t end = path.find('/', start);
    if (end == std::string_view::npos) end = path.size();
    const std::string_view part = path.substr(start, end - start);
    if (part == "..") {
      result.erase(result.empty() ? 0 : result.rfind('/'));
    } else if (!part.empty() && part != ".") {
      result.append("/").append(part);
    }
    start = end + 1;
  }
  return result.empty() ? "/" : result;
}

std::string AbsoluteVariable(const char* name) {
  const char* const value = std::getenv(name);
  if (value == nullptr || *value != '/') return {};
  return WithoutDots(value);
}

class LinuxFileSystem final : public ports::FileSystem {
 public:
  char Separator() const override { return '/'; }

  ports::Outcome<ports::FileFacts> Examine(const std::string& path) override {
    ports::FileFacts facts;
    struct stat status {};
    if (stat(Name(path), &status) != 0) {
      const ports::SystemCode code = errno;
      if (!MeansMissing(code) && code != ELOOP)
        return ports::Outcome<ports::FileFacts>::Failure(code);
      const bool is_dead_link = lstat(Name(path), &status) == 0;
      facts.kind = is_dead_link ? ports::FileKind::kOther : ports::FileKind::kNone;
      return ports::Outcome<ports::FileFacts>::Success(facts);
    }
    facts.kind = KindOf(status.st_mode);
    if (facts.kind == ports::FileKind::kFile) facts.length = status.st_size;
    facts.read_only = (status.st_mode & S_IWUSR) == 0;
    return ports::Outcome<ports::FileFacts>::Success(facts);
  }

  ports::Outcome<std::unique_ptr<ports::File>> Open(const std::string& path,
                                                    ports::FileMode mode) override {
    int flags = O_RDONLY;
    if (mode == ports::FileMode::kWriteNew) flags = O_WRONLY | O_CREAT | O_TRUNC;
    if (mode == ports::FileMode::kCreateNew) flags = O_WRONLY | O_CREAT | O_EXCL;
    const mode_t rights = mode == ports::FileMode::kCreateNew ? kNewCopyMode : kNewFileMode;
    UniqueDescriptor descriptor(open(Name(path), flags | O_CLOEXEC | O_NOCTTY, rights));
    if (!descriptor) return ports::Outcome<std::unique_ptr<ports::File>>::Failure(errno);
    return ports::Outcome<std::unique_ptr<ports::File>>::Success(
        std::make_unique<LinuxFile>(std::move(descriptor)));
  }

  ports::Outcome<std::vector<ports::FolderEntry>> List(const std::string& folder) override {
    using Result = ports::Outcome<std::vector<ports::FolderEntry>>;
    const FolderStream stream(opendir(Name(folder)));
    if (!stream) return Result::Failure(errno);
    std::vector<ports::FolderEntry> entries;
    for (;;) {
      errno = 0;
      const dirent* const entry = readdir(stream.Get());
      if (entry == nullptr) break;
      const std::string_view name = static_cast<const char*>(entry->d_name);
      if (name == "." || name == "..") continue;
      struct stat status {};
      const bool is_known = fstatat(dirfd(stream.Get()), entry->d_name, &status, 0) == 0;
      entries.push_back(
          {std::string(name), is_known ? KindOf(status.st_mode) : ports::FileKind::kOther});
    }
    if (errno != 0) return Result::Failure(errno);
    return Result::Success(std::move(entries));
  }

  ports::Status CreateFolder(const std::string& path) override {
    return StatusOf(mkdir(Name(path), kPermissionBits));
  }

  ports::Status RemoveFolder(const std::string& path) override {
    return StatusOf(rmdir(Name(path)));
  }

  ports::Status RemoveFile(const std::string& path) override {
    return StatusOf(unlink(Name(path)));
  }

  ports::Status Rename(const std::string& from, const std::string& to) override {
    return StatusOf(rename(Name(from), Name(to)));
  }

  ports::Status RenameToFree(const std::string& from, const std::string& to) override {
    if (renameat2(AT_FDCWD, Name(from), AT_FDCWD, Name(to), RENAME_NOREPLACE) == 0)
      return ports::Status::Success();
    // File systems that do not know the flag know links: a second name fails where one exists.
    if (errno != EINVAL && errno != ENOSYS) return ports::Status::Failure(errno);
    if (link(Name(from), Name(to)) != 0) return ports::Status::Failure(errno);
    return StatusOf(unlink(Name(from)));
  }

  ports::Status AddName(const std::string& file, const std::string& name) override {
    struct stat status {};
    if (lstat(Name(file), &status) != 0) return ports::Status::Failure(errno);
    if (!S_ISREG(status.st_mode)) return ports::Status::Failure(EINVAL);
    return StatusOf(link(Name(file), Name(name)));
  }

  ports::Status SetReadOnly(const std::string& path, bool read_only) override {
    struct stat status {};
    if (stat(Name(path), &status) != 0) return ports::Status::Failure(errno);
    const mode_t old_mode = status.st_mode & kPermissionBits;
    const mode_t mode = read_only ? old_mode & ~kAllWriteBits : old_mode | S_IWUSR;
    return mode == old_mode ? ports::Status::Success() : StatusOf(chmod(Name(path), mode));
  }

  ports::Status CopyAttributes(const std::string& source, const std::string& target) override {
    struct stat status {};
    if (stat(Name(source), &status) != 0) return ports::Status::Failure(errno);
    const timespec times[] = {{0, UTIME_OMIT}, status.st_mtim};
    const ports::Status timed =
        AsFarAsPossible(StatusOf(utimensat(AT_FDCWD, Name(target), times, 0)));
    const ports::Status allowed = SetMode(Name(target), status.st_mode & kPermissionBits);
    return timed ? allowed : timed;
  }

  ports::Status SetFacts(const std::string& path, std::int64_t modified,
                         std::uint32_t unix_mode) override {
    const timespec times[] = {{0, UTIME_OMIT}, {static_cast<time_t>(modified), 0}};
    const ports::Status timed = StatusOf(utimensat(AT_FDCWD, Name(path), times, 0));
    return timed ? StatusOf(chmod(Name(path), unix_mode & kPermissionBits)) : timed;
  }

  ports::Status CopyRights(const std::string& source, const std::string& target) override {
    struct stat status {};
    if (stat(Name(source), &status) != 0) return ports::Status::Failure(errno);
    // First the group alone: its members may set it, the owner only root.
    for (const uid_t owner : {static_cast<uid_t>(-1), status.st_uid}) {
      const ports::Status owned =
          AsFarAsPossible(StatusOf(chown(Name(target), owner, status.st_gid)));
      if (!owned) return owned;
    }
    return SetMode(Name(target), status.st_mode & kPermissionBits);
  }

  ports::Outcome<std::string> FollowLinks(const std::string& path) override {
    std::string followed = path;
    for (int links = 0; links < kMostLinks; ++links) {
      char target[PATH_MAX];
      const ssize_t length = readlink(Name(followed), target, sizeof target);
      if (length < 0) {
        const bool is_no_link = errno == EINVAL || MeansMissing(errno);
        return is_no_link ? ports::Outcome<std::string>::Success(std::move(followed))
                          : ports::Outcome<std::string>::Failure(errno);
      }
      // A relative target starts from the folder of the link.
      if (target[0] == '/') {
        followed.clear();
      } else {
        followed.erase(followed.rfind('/') + 1);
      }
      followed.append(target, static_cast<std::size_t>(length));
    }
    return ports::Outcome<std::string>::Failure(ELOOP);
  }

  ports::Outcome<std::string> MakeAbsolute(const std::string& path) override {
    if (path.empty() || path.find('\0') != std::string::npos)
      return ports::Outcome<std::string>::Failure(ENOENT);
    if (path.front() == '/') return ports::Outcome<std::string>::Success(WithoutDots(path));
    char folder[PATH_MAX];
    if (getcwd(folder, sizeof folder) == nullptr)
      return ports::Outcome<std::string>::Failure(errno);
    return ports::Outcome<std::string>::Success(WithoutDots(std::string(folder) + "/" + path));
  }

  ports::Outcome<std::string> TemporaryFolderOfSystem() override { return TemporaryFolder(); }

  std::string VirtualCopyOf(const std::string& /*path*/) override { return {}; }

  ports::Status CreateProtectedFolder(const std::string& path) override {
    return mkdir(path.c_str(), S_IRWXU) == 0 ? ports::Status::Success()
                                             : ports::Status::Failure(errno);
  }

  ports::Outcome<std::string> TemporaryFolder() override {
    std::string folder = AbsoluteVariable("TMPDIR");
    // The updater's copy is run from there.
    if (!folder.empty() && LetsProgramsRun(folder)) return PrivatePartOf(std::move(folder));
    folder = AbsoluteVariable("XDG_CACHE_HOME");
    if (folder.empty()) {
      folder = AbsoluteVariable("HOME");
      if (folder.empty()) {
        errno = 0;
        const passwd* const user = getpwuid(getuid());
        if (user == nullptr || user->pw_dir == nullptr)
          return ports::Outcome<std::string>::Failure(errno != 0 ? errno : ENOENT);
        folder = WithoutDots(user->pw_dir);
      }
      folder += "/.cache";
    }
    return PrivatePartOf(folder + "/tamrin");
  }

  ports::Status FlushFolder(const std::string& folder) override {
    const UniqueDescriptor descriptor(
        open(folder.empty() ? "." : Name(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // A folder that may be written but not read (EACCES) cannot be flushed; the rename stands.
    if (!descriptor)
      return errno == EACCES ? ports::Status::Success() : ports::Status::Failure(errno);
    const ports::Status status = StatusOf(fsync(descriptor.Get()));
    // Returned by file systems that cannot flush folders.
    const bool is_unable = status.code == EINVAL || status.code == EROFS;
    return is_unable ? ports::Status::Success() : status;
  }

  ports::Status FlushTree(const std::string& folder) override {
    const UniqueDescriptor descriptor(open(Name(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor) return ports::Status::Failure(errno);
    return StatusOf(syncfs(descriptor.Get()));
  }

  ports::Status MakeExecutable(const std::string& path) override {
    struct stat status {};
    if (stat(Name(path), &status) != 0) return ports::Status::Failure(errno);
    // Whoever may read it may run it.
    const mode_t mode = status.st_mode & kPermissionBits;
    return StatusOf(chmod(Name(path), mode | S_IXUSR | ((mode & (S_IRGRP | S_IROTH)) >> 2U)));
  }

  bool MeansMissing(ports::SystemCode code) const override {
    return code == ENOENT || code == ENOTDIR;
  }
  bool MeansOtherDevice(ports::SystemCode code) const override { return code == EXDEV; }
  bool MeansBusy(ports::SystemCode code) const override { return code == EBUSY || code == ETXTBSY; }
};

}  // namespace

std::unique_ptr<ports::FileSystem> MakeFileSystem() {
  return std::make_unique<LinuxFileSystem>();
}

}  // namespace platform
