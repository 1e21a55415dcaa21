#include "ports/log_files.h"

#include "platform/factories.h"
#include "platform/windows/handles.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
// The system's headers come first: this builds on them.
#include <shlobj.h>

namespace platform {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr wchar_t kMutex[] = L"Local\\TMW_WebUpdate_Log";
constexpr DWORD kLongestWait = 1000;  // milliseconds

// Only one process at a time appends or renames. One that does not get its turn goes on all the
// same: the system itself keeps lines apart, if not in all its versions.
class Turn {
 public:
  Turn() : mutex_(CreateMutexW(nullptr, FALSE, kMutex)) {
    if (!mutex_) return;
    const DWORD waited = WaitForSingleObject(mutex_.Get(), kLongestWait);
    is_held_ = waited == WAIT_OBJECT_0 || waited == WAIT_ABANDONED;
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    if (is_held_) ReleaseMutex(mutex_.Get());
  }

  bool IsHeld() const { return is_held_; }

 private:
  UniqueKernelHandle mutex_;
  bool is_held_ = false;
};

// The folder for the data of programs; empty if this user has none.
std::wstring DataFolder() {
  wchar_t folder[MAX_PATH];
  const DWORD length = GetEnvironmentVariableW(L"LOCALAPPDATA", folder, MAX_PATH);
  if (length > 0 && length < MAX_PATH) return folder;
  const HRESULT result = SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA | CSIDL_FLAG_CREATE, nullptr,
                                          SHGFP_TYPE_CURRENT, folder);
  return SUCCEEDED(result) ? folder : L"";
}

UniqueFileHandle OpenForAppending(const std::wstring& path) {
  return UniqueFileHandle(CreateFileW(path.c_str(), FILE_APPEND_DATA | FILE_READ_ATTRIBUTES,
                                      kShareAll, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                      nullptr));
}

bool IsFull(const std::wstring& path, std::int64_t limit) {
  WIN32_FILE_ATTRIBUTE_DATA facts{};
  if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &facts) == FALSE) return false;
  const auto high = static_cast<std::int64_t>(facts.nFileSizeHigh);
  return (high << 32) + facts.nFileSizeLow >= limit;
}

class WindowsLogFiles final : public ports::LogFiles {
 public:
  ports::Outcome<std::string> Folder() override {
    using Result = ports::Outcome<std::string>;
    const std::wstring data = DataFolder();
    if (data.empty()) return Result::Failure(ERROR_PATH_NOT_FOUND);
    const std::wstring folder = data + L"\\Tamrin";
    const BOOL created = CreateDirectoryW(folder.c_str(), nullptr);
    const ports::SystemCode code = created != FALSE ? 0 : LastError();
    if (code != 0 && code != ERROR_ALREADY_EXISTS) return Result::Failure(code);
    return Result::Success(FromWide(folder));
  }

  ports::Status Append(const std::string& path, std::string_view bytes, std::int64_t limit,
                       const std::string& old_path) override {
    const std::wstring name = ToWide(path);
    const Turn turn;
    if (turn.IsHeld() && IsFull(name, limit))
      MoveFileExW(name.c_str(), ToWide(old_path).c_str(), MOVEFILE_REPLACE_EXISTING);
    const UniqueFileHandle file = OpenForAppending(name);
    if (!file) return ports::Status::Failure(LastError());
    DWORD written = 0;
    const BOOL ok =
        WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    return StatusOf(ok);
  }

  ports::LocalMoment Now() override {
    SYSTEMTIME local{};
    SYSTEMTIME utc{};
    GetSystemTime(&utc);
    SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
    FILETIME local_ticks{};
    FILETIME utc_ticks{};
    SystemTimeToFileTime(&local, &local_ticks);
    SystemTimeToFileTime(&utc, &utc_ticks);
    const std::int64_t offset = Ticks(local_ticks) - Ticks(utc_ticks);
    return {local.wYear,         local.wMonth,
            local.wDay,          local.wHour,
            local.wMinute,       local.wSecond,
            local.wMilliseconds, static_cast<int>(offset / kTicksPerMinute)};
  }

  std::int32_t OwnProcess() override { return static_cast<std::int32_t>(GetCurrentProcessId()); }

  std::string_view LineEnd() override { return "\r\n"; }

 private:
  static constexpr std::int64_t kTicksPerMinute = 600'000'000;  // of 100 ns

  static std::int64_t Ticks(const FILETIME& time) {
    return (static_cast<std::int64_t>(time.dwHighDateTime) << 32) + time.dwLowDateTime;
  }
};

}  // namespace

std::unique_ptr<ports::LogFiles> MakeLogFiles() {
  return std::make_unique<WindowsLogFiles>();
}

}  // namespace platform
