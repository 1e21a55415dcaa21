#include "platform/factories.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "platform/linux/descriptor.h"
#include "ports/binary_file.h"

namespace platform {
namespace {

constexpr mode_t kNewFileMode = 0666;  // reduced by the umask

class LinuxBinaryFile final : public ports::BinaryFileHandle {
 public:
  explicit LinuxBinaryFile(UniqueDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

  std::uint32_t Size() override {
    struct stat facts {};
    if (fstat(descriptor_.Get(), &facts) != 0) return 0;
    return static_cast<std::uint32_t>(facts.st_size);
  }

  ports::Status Seek(std::int32_t position, std::uint32_t move_method) override {
    constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (move_method > ports::win32::kMoveFromEnd) return ports::Status::Failure(EINVAL);
    if (lseek(descriptor_.Get(), position, kWhence[move_method]) < 0)
      return ports::Status::Failure(errno);
    return ports::Status::Success();
  }

  ports::Outcome<std::uint32_t> Write(const void* data, std::uint32_t length) override {
    for (;;) {
      const ssize_t written = write(descriptor_.Get(), data, length);
      if (written >= 0)
        return ports::Outcome<std::uint32_t>::Success(static_cast<std::uint32_t>(written));
      if (errno != EINTR) return ports::Outcome<std::uint32_t>::Failure(errno);
    }
  }

  ports::Status Flush() override {
    return fsync(descriptor_.Get()) == 0 ? ports::Status::Success() : ports::Status::Failure(errno);
  }

  ports::Status Close() override {
    // The kernel releases the descriptor even if it reports a failure, so it is closed only once.
    if (!descriptor_) return ports::Status::Failure(EBADF);
    return close(descriptor_.Release()) == 0 ? ports::Status::Success()
                                             : ports::Status::Failure(errno);
  }

 private:
  UniqueDescriptor descriptor_;
};

int AccessFlags(std::uint32_t access) {
  const bool reads = (access & ports::win32::kGenericRead) != 0;
  const bool writes = (access & ports::win32::kGenericWrite) != 0;
  if (!writes) return O_RDONLY;
  // Whoever plants a link would choose what is overwritten.
  return (reads ? O_RDWR : O_WRONLY) | O_NOFOLLOW;
}

// Truncation is left to Open: it must not happen before the lock is held.
std::optional<int> CreationFlags(std::uint32_t disposition) {
  switch (disposition) {
    case ports::win32::kCreateNew:
      return O_CREAT | O_EXCL;
    case ports::win32::kCreateAlways:
    case ports::win32::kOpenAlways:
      return O_CREAT;
    case ports::win32::kOpenExisting:
    case ports::win32::kTruncateExisting:
      return 0;
    default:
      return std::nullopt;
  }
}

// A caller that lets others write takes no lock; a writer excludes everybody who takes one.
ports::Status Lock(int descriptor, bool writes, std::uint32_t share_mode) {
  if ((share_mode & ports::win32::kShareWrite) != 0) return ports::Status::Success();
  const bool is_alone = writes || (share_mode & ports::win32::kShareRead) == 0;
  if (flock(descriptor, (is_alone ? LOCK_EX : LOCK_SH) | LOCK_NB) == 0)
    return ports::Status::Success();
  if (errno == EWOULDBLOCK) return ports::Status::Failure(EBUSY);
  // Some network file systems support no locks; the file can be used nevertheless.
  return errno == ENOLCK || errno == EOPNOTSUPP ? ports::Status::Success()
                                                : ports::Status::Failure(errno);
}

class LinuxBinaryFiles final : public ports::BinaryFiles {
 public:
  ports::Outcome<std::unique_ptr<ports::BinaryFileHandle>> Open(const std::string& path,
                                                                std::uint32_t access,
                                                                std::uint32_t share_mode,
                                                                std::uint32_t disposition,
                                                                std::uint32_t /*flags*/) override {
    using Result = ports::Outcome<std::unique_ptr<ports::BinaryFileHandle>>;
    const auto creation = CreationFlags(disposition);
    if (!creation) return Result::Failure(EINVAL);
    const int flags = AccessFlags(access);
    UniqueDescriptor file(open(path.c_str(), flags | *creation | O_CLOEXEC, kNewFileMode));
    if (!file) return Result::Failure(errno);
    struct stat facts {};
    if (fstat(file.Get(), &facts) != 0) return Result::Failure(errno);
    if (S_ISDIR(facts.st_mode)) return Result::Failure(EISDIR);
    if (const ports::Status lock = Lock(file.Get(), flags != O_RDONLY, share_mode); !lock)
      return Result::Failure(lock.code);
    const bool truncates = disposition == ports::win32::kCreateAlways ||
                           disposition == ports::win32::kTruncateExisting;
    if (truncates && ftruncate(file.Get(), 0) != 0) return Result::Failure(errno);
    return Result::Success(std::make_unique<LinuxBinaryFile>(std::move(file)));
  }
};

}  // namespace

std::unique_ptr<ports::BinaryFiles> MakeBinaryFiles() {
  return std::make_unique<LinuxBinaryFiles>();
}

}  // namespace platform
