#include "platform/factories.h"

#include <algorithm>
#include <utility>

#include "platform/windows/handles.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "ports/page_file.h"

namespace platform {
namespace {

using ports::FileIdentity;
using ports::Outcome;
using ports::PageFile;
using ports::PageFileMode;
using ports::Status;
using ports::SystemCode;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::size_t kLargestTransfer = 0x1000000;

OVERLAPPED At(std::uint64_t offset) {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset & 0xFFFFFFFFU);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
  return place;
}

Outcome<FileIdentity> IdentityOfHandle(HANDLE handle) {
  BY_HANDLE_FILE_INFORMATION facts{};
  if (GetFileInformationByHandle(handle, &facts) == FALSE)
    return Outcome<FileIdentity>::Failure(LastError());
  const std::uint64_t high = facts.nFileIndexHigh;
  return Outcome<FileIdentity>::Success(
      {facts.dwVolumeSerialNumber, (high << 32U) | facts.nFileIndexLow});
}

class WindowsPageFile final : public PageFile {
 public:
  explicit WindowsPageFile(UniqueFileHandle handle) : handle_(std::move(handle)) {}

  Outcome<std::uint64_t> Size() override {
    LARGE_INTEGER size{};
    if (GetFileSizeEx(handle_.Get(), &size) == FALSE)
      return Outcome<std::uint64_t>::Failure(LastError());
    return Outcome<std::uint64_t>::Success(static_cast<std::uint64_t>(size.QuadPart));
  }

  Outcome<FileIdentity> Identity() override { return IdentityOfHandle(handle_.Get()); }

  Outcome<std::size_t> ReadAt(std::uint64_t offset, void* data, std::size_t length) override {
    std::size_t done = 0;
    while (done < length) {
      OVERLAPPED place = At(offset + done);
      const auto part = static_cast<DWORD>(std::min(length - done, kLargestTransfer));
      DWORD count = 0;
      if (ReadFile(handle_.Get(), static_cast<char*>(data) + done, part, &count, &place) == FALSE) {
        const SystemCode code = LastError();
        if (code == ERROR_HANDLE_EOF) break;
        return Outcome<std::size_t>::Failure(code);
      }
      if (count == 0) break;
      done += count;
    }
    return Outcome<std::size_t>::Success(done);
  }

  Status WriteAt(std::uint64_t offset, const void* data, std::size_t length) override {
    std::size_t done = 0;
    while (done < length) {
      OVERLAPPED place = At(offset + done);
      const auto part = static_cast<DWORD>(std::min(length - done, kLargestTransfer));
      DWORD count = 0;
      const char* const from = static_cast<const char*>(data) + done;
      if (WriteFile(handle_.Get(), from, part, &count, &place) == FALSE)
        return Status::Failure(LastError());
      if (count == 0) return Status::Failure(ERROR_DISK_FULL);
      done += count;
    }
    return Status::Success();
  }

  Status Flush() override {
    return FlushFileBuffers(handle_.Get()) != FALSE ? Status::Success()
                                                    : Status::Failure(LastError());
  }

  Status Close() override {
    if (!handle_) return Status::Failure(ERROR_INVALID_HANDLE);
    return CloseHandle(handle_.Release()) != FALSE ? Status::Success()
                                                   : Status::Failure(LastError());
  }

  bool MeansFull(ports::SystemCode code) const override {
    return code == static_cast<ports::SystemCode>(ERROR_DISK_FULL) ||
           code == static_cast<ports::SystemCode>(ERROR_HANDLE_DISK_FULL);
  }

 private:
  UniqueFileHandle handle_;
};

class WindowsPageFiles final : public ports::PageFiles {
 public:
  Outcome<std::unique_ptr<PageFile>> Open(const std::string& path, PageFileMode mode) override {
    using Result = Outcome<std::unique_ptr<PageFile>>;
    const bool is_new = mode != PageFileMode::kRead;
    // The rights of a new file are those of its folder: temporary files lie where their target
    // does.
    UniqueFileHandle handle(CreateFileW(
        ToWide(path).c_str(), is_new ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ, kShareAll,
        nullptr, is_new ? CREATE_NEW : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!handle) return Result::Failure(LastError());
    return Result::Success(std::make_unique<WindowsPageFile>(std::move(handle)));
  }

  Outcome<FileIdentity> IdentityOf(const std::string& path) override {
    const UniqueFileHandle handle(CreateFileW(ToWide(path).c_str(), 0, kShareAll, nullptr,
                                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!handle) return Outcome<FileIdentity>::Failure(LastError());
    return IdentityOfHandle(handle.Get());
  }
};

}  // namespace

std::unique_ptr<ports::PageFiles> MakePageFiles() {
  return std::make_unique<WindowsPageFiles>();
}

}  // namespace platform
