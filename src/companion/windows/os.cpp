#include "companion/os.h"

#include <algorithm>
#include <random>

#include "foundation/encodings.h"
#include "foundation/unique_handle.h"

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <objbase.h>

namespace companion::os {
namespace {

constexpr int kRenameAttempts = 50;
constexpr DWORD kRenameInterval = 100;  // milliseconds

bool MeansBusy(DWORD code) {
  return code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION ||
         code == ERROR_ACCESS_DENIED || code == ERROR_DELETE_PENDING ||
         code == ERROR_USER_MAPPED_FILE;
}

std::wstring Wide(const std::string& path) {
  const std::u16string units = tmw::Utf8ToUtf16(path);
  return {units.begin(), units.end()};
}

// An ordinary path cannot create folders beyond this length (an 8.3 name must still fit).
constexpr std::size_t kLongPath = 240;

// A path for system calls; empty if it is no path. A long one needs the prefix that switches the
// limit off, and behind that prefix the system takes "." and doubled separators for names.
std::wstring SystemPath(const std::string& path) {
  const std::wstring wide = Wide(path);
  std::wstring full(MAX_PATH, L'\0');
  for (bool fits = false; !fits;) {
    const DWORD length =
        GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    fits = length < full.size();
    full.resize(length);
  }
  if (full.size() < kLongPath || full.starts_with(L"\\\\?\\") || full.starts_with(L"\\\\.\\"))
    return full;
  if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC" + full.substr(1);
  return L"\\\\?\\" + full;
}

constexpr std::int64_t kUnixEpoch = 11644473600;  // seconds from 1601 to 1970

FILETIME ToFileTime(std::int64_t seconds) {
  const auto ticks = static_cast<std::uint64_t>((seconds + kUnixEpoch) * 10000000);
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
}

std::int64_t FromFileTime(const FILETIME& time) {
  const auto ticks = static_cast<std::int64_t>(
      static_cast<std::uint64_t>(time.dwHighDateTime) << 32U | time.dwLowDateTime);
  return ticks / 10000000 - kUnixEpoch;
}

struct HandleTraits {
  using Type = HANDLE;
  static Type Invalid() { return INVALID_HANDLE_VALUE; }
  static void Close(Type handle) { CloseHandle(handle); }
};
using Handle = tmw::UniqueHandle<HandleTraits>;

OVERLAPPED At(std::uint64_t offset) {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
  return place;
}

DWORD Chunk(std::size_t length) {
  return static_cast<DWORD>(std::min<std::size_t>(length, 1U << 24U));
}

class WindowsReadableFile final : public ReadableFile {
 public:
  WindowsReadableFile(Handle file, std::uint64_t size) : file_(std::move(file)), size_(size) {}

  std::uint64_t Size() const override { return size_; }

  std::optional<std::size_t> ReadAt(std::uint64_t offset, void* buffer,
                                    std::size_t length) override {
    std::size_t done = 0;
    while (done < length) {
      OVERLAPPED place = At(offset + done);
      DWORD got = 0;
      if (ReadFile(file_.Get(), static_cast<char*>(buffer) + done, Chunk(length - done), &got,
                   &place) == FALSE) {
        if (GetLastError() == ERROR_HANDLE_EOF) break;
        return std::nullopt;
      }
      if (got == 0) break;
      done += got;
    }
    return done;
  }

 private:
  Handle file_;
  std::uint64_t size_;
};

class WindowsWritableFile final : public WritableFile {
 public:
  WindowsWritableFile(Handle file, std::wstring path)
      : file_(std::move(file)), path_(std::move(path)) {}

  bool Write(const void* data, std::size_t length) override {
    for (std::size_t done = 0; done < length;) {
      DWORD put = 0;
      if (WriteFile(file_.Get(), static_cast<const char*>(data) + done, Chunk(length - done), &put,
                    nullptr) == FALSE) {
        return false;
      }
      done += put;
    }
    return true;
  }

  bool WriteAt(std::uint64_t offset, const void* data, std::size_t length) override {
    // A write with a place moves the file's position: it is put back.
    LARGE_INTEGER here{};
    if (SetFilePointerEx(file_.Get(), LARGE_INTEGER{}, &here, FILE_CURRENT) == FALSE) return false;
    LARGE_INTEGER there{};
    there.QuadPart = static_cast<LONGLONG>(offset);
    return SetFilePointerEx(file_.Get(), there, nullptr, FILE_BEGIN) != FALSE &&
           Write(data, length) && SetFilePointerEx(file_.Get(), here, nullptr, FILE_BEGIN) != FALSE;
  }

  bool Apply(const Attributes& attributes) override {
    if (attributes.modified) {
      const FILETIME time = ToFileTime(*attributes.modified);
      SetFileTime(file_.Get(), nullptr, nullptr, &time);
    }
    constexpr DWORD kTaken = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                             FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;
    if (attributes.dos_attributes && (*attributes.dos_attributes & kTaken) != 0) {
      SetFileAttributesW(path_.c_str(), *attributes.dos_attributes & kTaken);
    }
    return true;
  }

  bool Flush() override { return FlushFileBuffers(file_.Get()) != FALSE; }
  bool Close() override { return !file_ || CloseHandle(file_.Release()) != FALSE; }

 private:
  Handle file_;
  std::wstring path_;
};

bool IsRealFolder(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
         (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
}

bool MakeFolders(const std::string& path) {
  for (std::size_t i = 1; i <= path.size(); ++i) {
    if (i == path.size() || IsSeparator(path[i])) {
      CreateDirectoryW(SystemPath(path.substr(0, i)).c_str(), nullptr);
    }
  }
  const DWORD attributes = GetFileAttributesW(SystemPath(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// root \ parts..., each part a real folder, made where it is missing.
std::optional<std::string> FolderBeneath(const std::string& root,
                                         std::span<const std::string> parts) {
  if (!MakeFolders(root)) return std::nullopt;
  std::string path = root;
  for (const std::string& part : parts) {
    path += "\\" + part;
    const std::wstring wide = SystemPath(path);
    CreateDirectoryW(wide.c_str(), nullptr);
    if (!IsRealFolder(wide)) return std::nullopt;
  }
  return path;
}

}  // namespace

void SetLastErrorCode(ErrorCode code) {
  SetLastError(static_cast<DWORD>(code));
}
ErrorCode LastErrorCode() {
  return static_cast<ErrorCode>(GetLastError());
}
ErrorCode DamagedDataCode() {
  return ERROR_CRC;
}
ErrorCode OutOfMemoryCode() {
  return ERROR_NOT_ENOUGH_MEMORY;
}

std::string FromNarrow(tmw::CodePage page, const char* text) {
  return tmw::CodePageToUtf8(page, text);
}
std::string ToNarrow(tmw::CodePage page, const std::string& text) {
  return tmw::Utf8ToCodePage(page, text);
}

std::unique_ptr<ReadableFile> OpenForReading(const std::string& path, ErrorCode& error) {
  Handle file(CreateFileW(SystemPath(path).c_str(), GENERIC_READ,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                          OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  LARGE_INTEGER size{};
  if (!file || GetFileSizeEx(file.Get(), &size) == FALSE) {
    error = LastErrorCode();
    return nullptr;
  }
  if (GetFileType(file.Get()) != FILE_TYPE_DISK) {
    error = ERROR_INVALID_PARAMETER;
    return nullptr;
  }
  return std::make_unique<WindowsReadableFile>(std::move(file),
                                               static_cast<std::uint64_t>(size.QuadPart));
}

std::unique_ptr<WritableFile> CreateBeneath(const std::string& root,
                                            std::span<const std::string> parts) {
  const auto folder = FolderBeneath(root, parts.first(parts.size() - 1));
  if (!folder) return nullptr;
  std::wstring path = SystemPath(*folder + "\\" + parts.back());
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES) {
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) {
      SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    }
    if (DeleteFileW(path.c_str()) == FALSE) return nullptr;
  }
  Handle file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                          FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (!file) return nullptr;
  return std::make_unique<WindowsWritableFile>(std::move(file), std::move(path));
}

bool MakeFolderBeneath(const std::string& root, std::span<const std::string> parts,
                       const Attributes& /*attributes*/) {
  return FolderBeneath(root, parts).has_value();
}

std::unique_ptr<WritableFile> CreateTemporaryBeside(const std::string& path, std::string& name) {
  std::random_device random;
  for (int attempt = 0; attempt < 100; ++attempt) {
    name = path + "." + std::to_string(random()) + ".tmp";
    std::wstring wide = SystemPath(name);
    Handle file(CreateFileW(wide.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file) return std::make_unique<WindowsWritableFile>(std::move(file), std::move(wide));
    if (GetLastError() != ERROR_FILE_EXISTS) break;
  }
  return nullptr;
}

Facts Examine(const std::string& path) {
  Facts result;
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (GetFileAttributesExW(SystemPath(path).c_str(), GetFileExInfoStandard, &data) == FALSE) {
    return result;
  }
  const bool is_folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  result.kind = is_folder ? Kind::kFolder : Kind::kFile;
  result.size = static_cast<std::uint64_t>(data.nFileSizeHigh) << 32U | data.nFileSizeLow;
  result.modified = FromFileTime(data.ftLastWriteTime);
  result.dos_attributes = data.dwFileAttributes & 0x37U;
  return result;
}

std::vector<std::string> List(const std::string& folder) {
  std::vector<std::string> names;
  WIN32_FIND_DATAW data{};
  const HANDLE search = FindFirstFileW(SystemPath(folder + "\\*").c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    const std::wstring wide = data.cFileName;
    const std::string name = tmw::Utf16ToUtf8(std::u16string(wide.begin(), wide.end()));
    constexpr DWORD kLinkedFolder = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    if (name == "." || name == "..") continue;
    if ((data.dwFileAttributes & kLinkedFolder) == kLinkedFolder) continue;
    names.push_back(name);
  } while (FindNextFileW(search, &data) != FALSE);
  FindClose(search);
  std::sort(names.begin(), names.end());
  return names;
}

bool Rename(const std::string& from, const std::string& to) {
  const std::wstring source = SystemPath(from);
  const std::wstring target = SystemPath(to);
  // A file that has just been written is often opened by a virus scanner at once.
  for (int attempt = 1;; ++attempt) {
    if (MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH) != FALSE) return true;
    if (!MeansBusy(GetLastError()) || attempt == kRenameAttempts) return false;
    Sleep(kRenameInterval);
  }
}

void CopyRights(const std::string& /*source*/, const std::string& /*target*/) {}

bool Remove(const std::string& path) {
  return DeleteFileW(SystemPath(path).c_str()) != FALSE;
}
bool RemoveFolder(const std::string& path) {
  return RemoveDirectoryW(SystemPath(path).c_str()) != FALSE;
}
void FlushFolderOf(const std::string& /*path*/) {}

bool SetModified(const std::string& path, std::int64_t modified) {
  const Handle file(CreateFileW(SystemPath(path).c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ,
                                nullptr, OPEN_EXISTING, 0, nullptr));
  const FILETIME time = ToFileTime(modified);
  return file && SetFileTime(file.Get(), nullptr, nullptr, &time) != FALSE;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.find_last_of("\\/");
  if (slash == std::string::npos) return ".";
  const bool is_root = slash == 0 || path[slash - 1] == ':';
  return path.substr(0, is_root ? slash + 1 : slash);
}
char Separator() {
  return '\\';
}
bool IsSeparator(char c) {
  return c == '\\' || c == '/';
}
bool IsAbsolute(const std::string& path) {
  return (!path.empty() && IsSeparator(path[0])) || (path.size() > 1 && path[1] == ':');
}

std::tm LocalTime(std::int64_t seconds) {
  const __time64_t time = seconds;
  std::tm result{};
  _localtime64_s(&result, &time);
  return result;
}

ErrorCode CallLibrary(const std::string& path, const char* entry_point) {
  const HRESULT ready = CoInitialize(nullptr);
  ErrorCode code = 0;
  const HMODULE library =
      LoadLibraryExW(Wide(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (library == nullptr) {
    code = LastErrorCode();
  } else {
    using Entry = HRESULT(__stdcall*)();
    const auto entry =
        reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(library, entry_point)));
    code = entry == nullptr ? LastErrorCode() : entry();
    FreeLibrary(library);
  }
  if (SUCCEEDED(ready)) CoUninitialize();
  return code;
}

}  // namespace companion::os
