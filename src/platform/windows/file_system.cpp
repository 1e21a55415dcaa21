#include "platform/factories.h"

#include <algorithm>
#include <iterator>

#include "platform/windows/file_codes.h"
#include "platform/windows/handles.h"
#include "platform/windows/native_path.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "platform/windows/writable_for_now.h"
#include "ports/file_system.h"
// The system's header builds on the others.
#include <sddl.h>

namespace platform {
namespace {

constexpr DWORD kLongestPath = 32768;

constexpr DWORD kReadOnly = FILE_ATTRIBUTE_READONLY;

// What a copy takes over from its source.
constexpr DWORD kCopiedAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                    FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

struct SearchTraits : FileHandleTraits {
  static void Close(Type handle) { FindClose(handle); }
};
using Search = tmw::UniqueHandle<SearchTraits>;

ports::FileKind KindOf(DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_DEVICE) != 0) return ports::FileKind::kOther;
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? ports::FileKind::kFolder
                                                      : ports::FileKind::kFile;
}

ports::FileFacts MakeFacts(DWORD attributes, DWORD size_high, DWORD size_low) {
  ports::FileFacts facts;
  facts.kind = KindOf(attributes);
  if (facts.kind == ports::FileKind::kFile)
    facts.length = static_cast<std::int64_t>((std::uint64_t{size_high} << 32) | size_low);
  facts.read_only = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
  return facts;
}

// Empty for a dangling link.
UniqueFileHandle OpenLinkTarget(const std::wstring& path) {
  return UniqueFileHandle(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

// Without the prefix that the system puts before it; empty on failure.
std::wstring PathOfHandle(const UniqueFileHandle& handle) {
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetFinalPathNameByHandleW(handle.Get(), path.data(), kLongestPath, 0));
  if (path.starts_with(L"\\\\?\\UNC\\")) return L"\\" + path.substr(7);
  return path.starts_with(L"\\\\?\\") ? path.substr(4) : path;
}

// The facts of a link's target; kOther for a dangling link.
ports::FileFacts FactsOfLinkTarget(const std::wstring& path) {
  const UniqueFileHandle handle = OpenLinkTarget(path);
  BY_HANDLE_FILE_INFORMATION found{};
  if (!handle || !GetFileInformationByHandle(handle.Get(), &found)) {
    ports::FileFacts facts;
    facts.kind = ports::FileKind::kOther;
    return facts;
  }
  return MakeFacts(found.dwFileAttributes, found.nFileSizeHigh, found.nFileSizeLow);
}

class WindowsFile final : public ports::File {
 public:
  explicit WindowsFile(UniqueFileHandle handle) : handle_(std::move(handle)) {}

  ports::Outcome<std::size_t> Read(void* buffer, std::size_t length) override {
    DWORD count = 0;
    if (!ReadFile(handle_.Get(), buffer, OneCall(length), &count, nullptr))
      return ports::Outcome<std::size_t>::Failure(LastError());
    return ports::Outcome<std::size_t>::Success(count);
  }

  ports::Status Write(const void* buffer, std::size_t length) override {
    const char* next = static_cast<const char*>(buffer);
    while (length > 0) {
      DWORD count = 0;
      if (!WriteFile(handle_.Get(), next, OneCall(length), &count, nullptr))
        return ports::Status::Failure(LastError());
      if (count == 0) return ports::Status::Failure(ERROR_WRITE_FAULT);
      next += count;
      length -= count;
    }
    return ports::Status::Success();
  }

  ports::Status Flush() override { return StatusOf(FlushFileBuffers(handle_.Get())); }

  ports::Status Close() override { return StatusOf(::CloseHandle(handle_.Release())); }

 private:
  // Larger requests fail on some network file systems.
  static DWORD OneCall(std::size_t length) {
    constexpr std::size_t kLimit = std::size_t{16} << 20;
    return static_cast<DWORD>(std::min(length, kLimit));
  }

  UniqueFileHandle handle_;
};

// Runs an action on a file that the system refuses to touch while it is read-only.
template <typename Action>
ports::Status DespiteReadOnly(const std::wstring& path, Action action) {
  const ports::Status status = StatusOf(action());
  if (status || status.code != ERROR_ACCESS_DENIED) return status;
  WritableForNow writable(path);
  if (!writable.HasChanged()) return status;
  const ports::Status second = StatusOf(action());
  if (second) writable.Keep();
  return second;
}

class WindowsFileSystem final : public ports::FileSystem {
 public:
  char Separator() const override { return '\\'; }

  ports::Outcome<ports::FileFacts> Examine(const std::string& path) override {
    const std::wstring native = NativePath(path);
    WIN32_FILE_ATTRIBUTE_DATA found{};
    if (!GetFileAttributesExW(native.c_str(), GetFileExInfoStandard, &found)) {
      const ports::SystemCode code = LastError();
      if (MeansMissing(code)) return ports::Outcome<ports::FileFacts>::Success({});
      return ports::Outcome<ports::FileFacts>::Failure(code);
    }
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
      return ports::Outcome<ports::FileFacts>::Success(FactsOfLinkTarget(native));
    return ports::Outcome<ports::FileFacts>::Success(
        MakeFacts(found.dwFileAttributes, found.nFileSizeHigh, found.nFileSizeLow));
  }

  ports::Outcome<std::unique_ptr<ports::File>> Open(const std::string& path,
                                                    ports::FileMode mode) override {
    const DWORD access = mode == ports::FileMode::kRead ? GENERIC_READ : GENERIC_WRITE;
    DWORD disposition = OPEN_EXISTING;
    if (mode == ports::FileMode::kWriteNew) disposition = CREATE_ALWAYS;
    if (mode == ports::FileMode::kCreateNew) disposition = CREATE_NEW;
    // A file that is being written is not read: it is not whole yet.
    UniqueFileHandle handle(CreateFileW(NativePath(path).c_str(), access, FILE_SHARE_READ, nullptr,
                                        disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!handle) return ports::Outcome<std::unique_ptr<ports::File>>::Failure(LastError());
    return ports::Outcome<std::unique_ptr<ports::File>>::Success(
        std::make_unique<WindowsFile>(std::move(handle)));
  }

  ports::Outcome<std::vector<ports::FolderEntry>> List(const std::string& folder) override {
    using Result = ports::Outcome<std::vector<ports::FolderEntry>>;
    if (folder.empty()) return Result::Failure(ERROR_PATH_NOT_FOUND);
    const std::wstring all = NativePath(folder + "\\*");
    WIN32_FIND_DATAW found{};
    const Search search(FindFirstFileW(all.c_str(), &found));
    if (!search) {
      // The root of an empty drive has not even "." in it.
      const ports::SystemCode code = LastError();
      if (code == ERROR_FILE_NOT_FOUND) return Result::Success({});
      return Result::Failure(code);
    }
    std::vector<ports::FolderEntry> entries;
    do {
      const std::wstring_view name = static_cast<const wchar_t*>(found.cFileName);
      if (name == L"." || name == L"..") continue;
      entries.push_back({FromWide(name), KindOf(found.dwFileAttributes)});
    } while (FindNextFileW(search.Get(), &found));
    const ports::SystemCode code = LastError();
    if (code != ERROR_NO_MORE_FILES) return Result::Failure(code);
    return Result::Success(std::move(entries));
  }

  ports::Status CreateFolder(const std::string& path) override {
    return StatusOf(CreateDirectoryW(NativePath(path).c_str(), nullptr));
  }

  ports::Status RemoveFolder(const std::string& path) override {
    return StatusOf(RemoveDirectoryW(NativePath(path).c_str()));
  }

  ports::Status RemoveFile(const std::string& path) override {
    const std::wstring native = NativePath(path);
    return DespiteReadOnly(native, [&] { return ::DeleteFileW(native.c_str()); });
  }

  ports::Status Rename(const std::string& from, const std::string& to) override {
    const std::wstring source = NativePath(from);
    const std::wstring target = NativePath(to);
    return DespiteReadOnly(target, [&] {
      return ::MoveFileExW(source.c_str(), target.c_str(),
                           MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    });
  }

  ports::Status RenameToFree(const std::string& from, const std::string& to) override {
    return StatusOf(
        ::MoveFileExW(NativePath(from).c_str(), NativePath(to).c_str(), MOVEFILE_WRITE_THROUGH));
  }

  ports::Status AddName(const std::string& file, const std::string& name) override {
    const std::wstring native = NativePath(file);
    const DWORD attributes = GetFileAttributesW(native.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return ports::Status::Failure(LastError());
    constexpr DWORD kNoPlainFile = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY;
    if ((attributes & kNoPlainFile) != 0) return ports::Status::Failure(ERROR_NOT_SUPPORTED);
    return StatusOf(CreateHardLinkW(NativePath(name).c_str(), native.c_str(), nullptr));
  }

  ports::Status SetReadOnly(const std::string& path, bool read_only) override {
    const std::wstring native = NativePath(path);
    const DWORD old = GetFileAttributesW(native.c_str());
    if (old == INVALID_FILE_ATTRIBUTES) return ports::Status::Failure(LastError());
    const DWORD attributes = read_only ? old | kReadOnly : old & ~kReadOnly;
    return attributes == old ? ports::Status::Success()
                             : StatusOf(SetAttributes(native, attributes));
  }

  ports::Status CopyAttributes(const std::string& source, const std::string& target) override {
    WIN32_FILE_ATTRIBUTE_DATA found{};
    if (!GetFileAttributesExW(NativePath(source).c_str(), GetFileExInfoStandard, &found))
      return ports::Status::Failure(LastError());
    const std::wstring native = NativePath(target);
    UniqueFileHandle handle(CreateFileW(native.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ,
                                        nullptr, OPEN_EXISTING, 0, nullptr));
    if (!handle) return ports::Status::Failure(LastError());
    if (!SetFileTime(handle.Get(), nullptr, nullptr, &found.ftLastWriteTime))
      return ports::Status::Failure(LastError());
    handle.Reset();
    return StatusOf(SetAttributes(native, found.dwFileAttributes & kCopiedAttributes));
  }

  ports::Status SetFacts(const std::string& path, std::int64_t modified,
                         std::uint32_t /*unix_mode*/) override {
    // A FILETIME counts from 1601 in steps of 100 ns.
    constexpr std::int64_t kSecondsFrom1601 = 11'644'473'600;
    constexpr std::int64_t kStepsPerSecond = 10'000'000;
    ULARGE_INTEGER steps{};
    steps.QuadPart = static_cast<ULONGLONG>((modified + kSecondsFrom1601) * kStepsPerSecond);
    const FILETIME time{steps.LowPart, steps.HighPart};
    const UniqueFileHandle handle(CreateFileW(NativePath(path).c_str(), FILE_WRITE_ATTRIBUTES,
                                              FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!handle || !SetFileTime(handle.Get(), nullptr, nullptr, &time))
      return ports::Status::Failure(LastError());
    return ports::Status::Success();
  }

  ports::Status CopyRights(const std::string& /*source*/, const std::string& /*target*/) override {
    return ports::Status::Success();
  }

  ports::Outcome<std::string> FollowLinks(const std::string& path) override {
    const std::wstring native = NativePath(path);
    const DWORD attributes = GetFileAttributesW(native.c_str());
    const bool is_link =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    const UniqueFileHandle handle = is_link ? OpenLinkTarget(native) : UniqueFileHandle();
    if (!handle) return ports::Outcome<std::string>::Success(path);
    const std::wstring followed = PathOfHandle(handle);
    if (followed.empty()) return ports::Outcome<std::string>::Failure(LastError());
    return ports::Outcome<std::string>::Success(FromWide(followed));
  }

  ports::Outcome<std::string> MakeAbsolute(const std::string& path) override {
    const std::wstring full = FullPath(path);
    if (full.empty()) return ports::Outcome<std::string>::Failure(LastError());
    return ports::Outcome<std::string>::Success(FromWide(full));
  }

  ports::Outcome<std::string> TemporaryFolder() override {
    wchar_t folder[MAX_PATH + 2];
    const DWORD length = GetTempPathW(static_cast<DWORD>(std::size(folder)), folder);
    if (length == 0) return ports::Outcome<std::string>::Failure(LastError());
    std::wstring_view path(folder, length);
    if (path.ends_with(L'\\') && !path.ends_with(L":\\")) path.remove_suffix(1);
    return ports::Outcome<std::string>::Success(FromWide(path));
  }

  ports::Outcome<std::string> TemporaryFolderOfSystem() override {
    const std::wstring windows = WindowsFolder();
    if (windows.empty()) return ports::Outcome<std::string>::Failure(LastError());
    return ports::Outcome<std::string>::Success(FromWide(windows + L"\\Temp"));
  }

  std::string VirtualCopyOf(const std::string& path) override {
    const std::wstring full = FullPath(path);
    std::wstring folder(kLongestPath, L'\0');
    folder.resize(GetEnvironmentVariableW(L"LOCALAPPDATA", folder.data(), kLongestPath));
    if (folder.empty() || full.size() < 3 || full[1] != L':') return {};
    return FromWide(folder + L"\\VirtualStore" + full.substr(2));
  }

  ports::Status CreateProtectedFolder(const std::string& path) override {
    // Full access for administrators and the system, nothing inherited from above.
    constexpr const wchar_t* kRights = L"O:BAD:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)";
    SECURITY_ATTRIBUTES rights{};
    rights.nLength = sizeof(rights);
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(
            kRights, SDDL_REVISION_1, &rights.lpSecurityDescriptor, nullptr) == FALSE)
      return ports::Status::Failure(LastError());
    const ports::Status created = StatusOf(CreateDirectoryW(NativePath(path).c_str(), &rights));
    LocalFree(rights.lpSecurityDescriptor);
    return created;
  }

  ports::Status FlushFolder(const std::string& /*folder*/) override {
    return ports::Status::Success();
  }

  ports::Status FlushTree(const std::string& folder) override {
    const auto listed = List(folder);
    if (!listed) return listed.ToStatus();
    for (const ports::FolderEntry& entry : listed.value) {
      const std::string path = folder + "\\" + entry.name;
      if (entry.kind == ports::FileKind::kFolder) {
        const ports::Status flushed = FlushTree(path);
        if (!flushed) return flushed;
        continue;
      }
      const UniqueFileHandle handle(CreateFileW(NativePath(path).c_str(), GENERIC_WRITE,
                                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                OPEN_EXISTING, 0, nullptr));
      if (!handle || !FlushFileBuffers(handle.Get())) return ports::Status::Failure(LastError());
    }
    return ports::Status::Success();
  }

  ports::Status MakeExecutable(const std::string& /*path*/) override {
    return ports::Status::Success();
  }

  bool MeansMissing(ports::SystemCode code) const override {
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND ||
           code == ERROR_INVALID_NAME || code == ERROR_BAD_PATHNAME ||
           code == ERROR_INVALID_DRIVE || code == ERROR_DIRECTORY;
  }

  bool MeansOtherDevice(ports::SystemCode code) const override {
    return code == ERROR_NOT_SAME_DEVICE;
  }

  bool MeansBusy(ports::SystemCode code) const override { return MayPass(code); }
};

}  // namespace

std::unique_ptr<ports::FileSystem> MakeFileSystem() {
  return std::make_unique<WindowsFileSystem>();
}

}  // namespace platform
