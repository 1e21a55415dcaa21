#include "companion/os.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <random>

#include "foundation/unique_handle.h"

namespace companion::os {
namespace {

struct DescriptorTraits {
  using Type = int;
  static Type Invalid() { return -1; }
  static void Close(Type descriptor) { close(descriptor); }
};
using Descriptor = tmw::UniqueHandle<DescriptorTraits>;

class LinuxReadableFile final : public ReadableFile {
 public:
  LinuxReadableFile(Descriptor fd, std::uint64_t size) : fd_(std::move(fd)), size_(size) {}

  std::uint64_t Size() const override { return size_; }

  std::optional<std::size_t> ReadAt(std::uint64_t offset, void* buffer,
                                    std::size_t length) override {
    std::size_t done = 0;
    while (done < length) {
      const ssize_t got = pread(fd_.Get(), static_cast<char*>(buffer) + done, length - done,
                                static_cast<off_t>(offset + done));
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) return std::nullopt;
      if (got == 0) break;
      done += static_cast<std::size_t>(got);
    }
    return done;
  }

 private:
  Descriptor fd_;
  std::uint64_t size_;
};

class LinuxWritableFile final : public WritableFile {
 public:
  explicit LinuxWritableFile(Descriptor fd) : fd_(std::move(fd)) {}

  bool Write(const void* data, std::size_t length) override {
    return Put(length, [&](std::size_t done) {
      return write(fd_.Get(), static_cast<const char*>(data) + done, length - done);
    });
  }

  bool WriteAt(std::uint64_t offset, const void* data, std::size_t length) override {
    return Put(length, [&](std::size_t done) {
      return pwrite(fd_.Get(), static_cast<const char*>(data) + done, length - done,
                    static_cast<off_t>(offset + done));
    });
  }

  bool Apply(const Attributes& attributes) override {
    if (attributes.modified) {
      const timespec times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(*attributes.modified), 0}};
      (void)!futimens(fd_.Get(), times);
    }
    return !attributes.unix_mode || SetMode(*attributes.unix_mode & 0777U);
  }

  bool Flush() override { return fsync(fd_.Get()) == 0; }
  bool Close() override { return !fd_ || close(fd_.Release()) == 0; }

 private:
  // A mount may decide on the rights alone, and give the owner what they need.
  bool SetMode(mode_t mode) const {
    if (fchmod(fd_.Get(), mode) == 0) return true;
    const int code = errno;
    struct stat facts {};
    const bool is_enough = fstat(fd_.Get(), &facts) == 0 && (mode & S_IRWXU & ~facts.st_mode) == 0;
    errno = code;
    return is_enough;
  }

  template <typename Step>
  static bool Put(std::size_t length, Step step) {
    for (std::size_t done = 0; done < length;) {
      const ssize_t put = step(done);
      if (put < 0 && errno == EINTR) continue;
      if (put <= 0) return false;
      done += static_cast<std::size_t>(put);
    }
    return true;
  }

  Descriptor fd_;
};

bool MakeFolders(const std::string& path) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos;
       end = path.find('/', end + 1)) {
    if (mkdir(path.substr(0, end).c_str(), 0777) != 0 && errno != EEXIST && errno != EROFS &&
        errno != EACCES) {
      return false;
    }
  }
  return mkdir(path.c_str(), 0777) == 0 || errno == EEXIST;
}

// The descriptor of root / parts..., each part a real folder, made where it is missing.
Descriptor OpenFolderBeneath(const std::string& root, std::span<const std::string> parts) {
  if (!MakeFolders(root)) return {};
  Descriptor folder(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  for (const std::string& part : parts) {
    if (!folder) break;
    if (mkdirat(folder.Get(), part.c_str(), 0777) != 0 && errno != EEXIST) return {};
    folder = Descriptor(
        openat(folder.Get(), part.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  }
  return folder;
}

}  // namespace

void SetLastErrorCode(ErrorCode code) {
  errno = code;
}
ErrorCode LastErrorCode() {
  return errno;
}
ErrorCode DamagedDataCode() {
  return EBADMSG;
}
ErrorCode OutOfMemoryCode() {
  return ENOMEM;
}

std::string FromNarrow(tmw::CodePage /*page*/, const char* text) {
  return text;
}
std::string ToNarrow(tmw::CodePage /*page*/, const std::string& text) {
  return text;
}

std::unique_ptr<ReadableFile> OpenForReading(const std::string& path, ErrorCode& error) {
  // Without O_NONBLOCK the opening of a pipe would wait for its writer.
  Descriptor fd(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat facts {};
  if (!fd || fstat(fd.Get(), &facts) != 0) {
    error = errno;
    return nullptr;
  }
  if (!S_ISREG(facts.st_mode)) {
    error = S_ISDIR(facts.st_mode) ? EISDIR : EINVAL;
    return nullptr;
  }
  posix_fadvise(fd.Get(), 0, 0, POSIX_FADV_SEQUENTIAL);
  return std::make_unique<LinuxReadableFile>(std::move(fd),
                                             static_cast<std::uint64_t>(facts.st_size));
}

std::unique_ptr<WritableFile> CreateBeneath(const std::string& root,
                                            std::span<const std::string> parts) {
  const Descriptor folder = OpenFolderBeneath(root, parts.first(parts.size() - 1));
  if (!folder) return nullptr;
  const char* name = parts.back().c_str();
  if (unlinkat(folder.Get(), name, 0) != 0 && errno != ENOENT) return nullptr;
  Descriptor fd(
      openat(folder.Get(), name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (!fd) return nullptr;
  return std::make_unique<LinuxWritableFile>(std::move(fd));
}

bool MakeFolderBeneath(const std::string& root, std::span<const std::string> parts,
                       const Attributes& attributes) {
  const Descriptor folder = OpenFolderBeneath(root, parts);
  if (!folder) return false;
  // A folder that its owner may not enter could not be filled.
  if (attributes.unix_mode) {
    (void)!fchmod(folder.Get(), (*attributes.unix_mode & 0777U) | 0700U);
  }
  return true;
}

std::unique_ptr<WritableFile> CreateTemporaryBeside(const std::string& path, std::string& name) {
  std::random_device random;
  for (int attempt = 0; attempt < 100; ++attempt) {
    name = path + "." + std::to_string(random()) + ".tmp";
    Descriptor fd(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (fd) return std::make_unique<LinuxWritableFile>(std::move(fd));
    if (errno != EEXIST) break;
  }
  return nullptr;
}

Facts Examine(const std::string& path) {
  struct stat facts {};
  Facts result;
  if (stat(path.c_str(), &facts) != 0) return result;
  result.kind = S_ISREG(facts.st_mode)   ? Kind::kFile
                : S_ISDIR(facts.st_mode) ? Kind::kFolder
                                         : Kind::kOther;
  result.size = static_cast<std::uint64_t>(facts.st_size);
  result.modified = facts.st_mtime;
  result.unix_mode = facts.st_mode;
  result.dos_attributes = S_ISDIR(facts.st_mode) ? 0x10U : 0U;
  return result;
}

std::vector<std::string> List(const std::string& folder) {
  std::vector<std::string> names;
  DIR* const stream = opendir(folder.c_str());
  if (stream == nullptr) return names;
  while (const dirent* const entry = readdir(stream)) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    struct stat facts {};
    const bool is_link = fstatat(dirfd(stream), entry->d_name, &facts, AT_SYMLINK_NOFOLLOW) == 0 &&
                         S_ISLNK(facts.st_mode);
    if (is_link && Examine(folder + "/" + name).kind != Kind::kFile) continue;
    names.push_back(name);
  }
  closedir(stream);
  std::sort(names.begin(), names.end());
  return names;
}

bool Rename(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;  // not every file system knows the flag
  if (access(to.c_str(), F_OK) == 0) {
    errno = EEXIST;
    return false;
  }
  return rename(from.c_str(), to.c_str()) == 0;
}

void CopyRights(const std::string& source, const std::string& target) {
  struct stat facts {};
  if (stat(source.c_str(), &facts) != 0) return;
  // First the group alone: its members may set it, the owner only root.
  bool has_group = chown(target.c_str(), static_cast<uid_t>(-1), facts.st_gid) == 0;
  has_group |= chown(target.c_str(), facts.st_uid, facts.st_gid) == 0;
  // Another group must not get what the source's group may.
  const mode_t mask = has_group ? 0777U : 0707U;
  (void)!chmod(target.c_str(), facts.st_mode & mask);
}

bool Remove(const std::string& path) {
  return unlink(path.c_str()) == 0;
}
bool RemoveFolder(const std::string& path) {
  return rmdir(path.c_str()) == 0;
}

void FlushFolderOf(const std::string& path) {
  const Descriptor folder(open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder) (void)!fsync(folder.Get());
}

bool SetModified(const std::string& path, std::int64_t modified) {
  const timespec times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(modified), 0}};
  return utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}
char Separator() {
  return '/';
}
bool IsSeparator(char c) {
  return c == '/';
}
bool IsAbsolute(const std::string& path) {
  return path.starts_with('/');
}

std::tm LocalTime(std::int64_t seconds) {
  const auto time = static_cast<time_t>(seconds);
  std::tm result{};
  localtime_r(&time, &result);
  return result;
}

ErrorCode CallLibrary(const std::string& path, const char* entry_point) {
  if (access(path.c_str(), R_OK) != 0) return errno;
  // A name without a separator would be looked for in the system's folders.
  const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
  void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return ENOEXEC;
  using Entry = std::int32_t (*)();
  const auto entry = reinterpret_cast<Entry>(dlsym(library, entry_point));
  const ErrorCode code = entry == nullptr ? ENOSYS : entry();
  dlclose(library);
  return code;
}

}  // namespace companion::os
