#include "platform/factories.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/linux/descriptor.h"
#include "ports/page_file.h"

namespace platform {
namespace {

using ports::FileIdentity;
using ports::Outcome;
using ports::PageFile;
using ports::PageFileMode;
using ports::Status;

constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kOrdinary = 0666;  // what the process forbids is taken off

FileIdentity IdentityFrom(const struct stat& facts) {
  return {static_cast<std::uint64_t>(facts.st_dev), static_cast<std::uint64_t>(facts.st_ino)};
}

class LinuxPageFile final : public PageFile {
 public:
  explicit LinuxPageFile(UniqueDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

  Outcome<std::uint64_t> Size() override {
    struct stat facts {};
    if (fstat(descriptor_.Get(), &facts) != 0) return Outcome<std::uint64_t>::Failure(errno);
    return Outcome<std::uint64_t>::Success(static_cast<std::uint64_t>(facts.st_size));
  }

  Outcome<FileIdentity> Identity() override {
    struct stat facts {};
    if (fstat(descriptor_.Get(), &facts) != 0) return Outcome<FileIdentity>::Failure(errno);
    return Outcome<FileIdentity>::Success(IdentityFrom(facts));
  }

  Outcome<std::size_t> ReadAt(std::uint64_t offset, void* data, std::size_t length) override {
    std::size_t done = 0;
    while (done < length) {
      const ssize_t count = pread(descriptor_.Get(), static_cast<char*>(data) + done, length - done,
                                  static_cast<off_t>(offset + done));
      if (count == 0) break;
      if (count > 0) {
        done += static_cast<std::size_t>(count);
      } else if (errno != EINTR) {
        return Outcome<std::size_t>::Failure(errno);
      }
    }
    return Outcome<std::size_t>::Success(done);
  }

  Status WriteAt(std::uint64_t offset, const void* data, std::size_t length) override {
    std::size_t done = 0;
    while (done < length) {
      const ssize_t count = pwrite(descriptor_.Get(), static_cast<const char*>(data) + done,
                                   length - done, static_cast<off_t>(offset + done));
      if (count == 0) return Status::Failure(ENOSPC);
      if (count > 0) {
        done += static_cast<std::size_t>(count);
      } else if (errno != EINTR) {
        return Status::Failure(errno);
      }
    }
    return Status::Success();
  }

  Status Flush() override {
    return fsync(descriptor_.Get()) == 0 ? Status::Success() : Status::Failure(errno);
  }

  Status Close() override {
    // The kernel gives the descriptor back even when it reports a failure, so it is closed once.
    if (!descriptor_) return Status::Failure(EBADF);
    return close(descriptor_.Release()) == 0 ? Status::Success() : Status::Failure(errno);
  }

  bool MeansFull(ports::SystemCode code) const override {
    return code == ENOSPC || code == EDQUOT || code == EFBIG;
  }

 private:
  UniqueDescriptor descriptor_;
};

class LinuxPageFiles final : public ports::PageFiles {
 public:
  Outcome<std::unique_ptr<PageFile>> Open(const std::string& path, PageFileMode mode) override {
    using Result = Outcome<std::unique_ptr<PageFile>>;
    const int flags = mode == PageFileMode::kRead ? O_RDONLY : O_RDWR | O_CREAT | O_EXCL;
    const mode_t rights = mode == PageFileMode::kCreateOrdinary ? kOrdinary : kOwnerOnly;
    UniqueDescriptor file(open(path.c_str(), flags | O_CLOEXEC, rights));
    if (!file) return Result::Failure(errno);
    struct stat facts {};
    if (fstat(file.Get(), &facts) != 0) return Result::Failure(errno);
    if (S_ISDIR(facts.st_mode)) return Result::Failure(EISDIR);
    return Result::Success(std::make_unique<LinuxPageFile>(std::move(file)));
  }

  Outcome<FileIdentity> IdentityOf(const std::string& path) override {
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0) return Outcome<FileIdentity>::Failure(errno);
    return Outcome<FileIdentity>::Success(IdentityFrom(facts));
  }
};

}  // namespace

std::unique_ptr<ports::PageFiles> MakePageFiles() {
  return std::make_unique<LinuxPageFiles>();
}

}  // namespace platform
