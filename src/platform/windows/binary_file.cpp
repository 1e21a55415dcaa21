#include "platform/factories.h"

#include "platform/windows/file_codes.h"
#include "platform/windows/handles.h"
#include "platform/windows/native_path.h"
#include "platform/windows/windows_headers.h"
#include "ports/binary_file.h"

namespace platform {
namespace {

constexpr int kOpenAttempts = 50;
constexpr DWORD kOpenInterval = 100;  // milliseconds

class WindowsBinaryFile final : public ports::BinaryFileHandle {
 public:
  explicit WindowsBinaryFile(UniqueFileHandle handle) : handle_(std::move(handle)) {}

  std::uint32_t Size() override {
    DWORD high = 0;
    return GetFileSize(handle_.Get(), &high);
  }

  ports::Status Seek(std::int32_t position, std::uint32_t move_method) override {
    const DWORD result = SetFilePointer(handle_.Get(), position, nullptr, move_method);
    if (result == INVALID_SET_FILE_POINTER) return ports::Status::Failure(LastError());
    return ports::Status::Success();
  }

  ports::Outcome<std::uint32_t> Write(const void* data, std::uint32_t length) override {
    DWORD written = 0;
    if (WriteFile(handle_.Get(), data, length, &written, nullptr) == FALSE)
      return ports::Outcome<std::uint32_t>::Failure(LastError());
    return ports::Outcome<std::uint32_t>::Success(written);
  }

  ports::Status Flush() override { return StatusOf(FlushFileBuffers(handle_.Get())); }

  ports::Status Close() override {
    if (CloseHandle(handle_.Get()) == FALSE) return ports::Status::Failure(LastError());
    handle_.Release();
    return ports::Status::Success();
  }

 private:
  UniqueFileHandle handle_;
};

class WindowsBinaryFiles final : public ports::BinaryFiles {
 public:
  ports::Outcome<std::unique_ptr<ports::BinaryFileHandle>> Open(const std::string& path,
                                                                std::uint32_t access,
                                                                std::uint32_t share_mode,
                                                                std::uint32_t disposition,
                                                                std::uint32_t flags) override {
    using Result = ports::Outcome<std::unique_ptr<ports::BinaryFileHandle>>;
    const std::wstring name = NativePath(path);
    // A file that has just been written is often opened by a virus scanner at once.
    for (int attempt = 1;; ++attempt) {
      UniqueFileHandle handle(
          CreateFileW(name.c_str(), access, share_mode, nullptr, disposition, flags, nullptr));
      if (handle) return Result::Success(std::make_unique<WindowsBinaryFile>(std::move(handle)));
      const ports::SystemCode code = LastError();
      if (!MayPass(code) || attempt == kOpenAttempts) return Result::Failure(code);
      Sleep(kOpenInterval);
    }
  }
};

}  // namespace

std::unique_ptr<ports::BinaryFiles> MakeBinaryFiles() {
  return std::make_unique<WindowsBinaryFiles>();
}

}  // namespace platform
