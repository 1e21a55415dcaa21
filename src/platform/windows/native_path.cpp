#include "platform/windows/native_path.h"

#include <algorithm>
#include <iterator>

#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"

namespace platform {
namespace {

// An ordinary path cannot create folders beyond this length (an 8.3 name must still fit).
constexpr std::size_t kLongPath = 240;

bool HasAnsiForm(const std::wstring& text) {
  const std::string utf8 = FromWide(text);
  return FromAnsi(ToAnsi(utf8)) == utf8;
}

// Of the last part of the path; empty if the volume keeps none.
std::wstring ShortNameOf(const std::wstring& path) {
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileW(path.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return {};
  FindClose(search);
  return static_cast<const wchar_t*>(found.cAlternateFileName);
}

std::wstring FolderFrom(UINT(WINAPI* call)(LPWSTR buffer, UINT size)) {
  wchar_t buffer[1000];
  const UINT length = call(buffer, static_cast<UINT>(std::size(buffer)));
  // A length beyond the buffer is the size that would be needed.
  return length < std::size(buffer) ? std::wstring(buffer, length) : std::wstring();
}

}  // namespace

std::wstring FullPath(const std::string& path) {
  if (path.empty() || path.find('\0') != std::string::npos) {
    SetLastError(ERROR_PATH_NOT_FOUND);
    return {};
  }
  const std::wstring wide = ToWide(path);
  std::wstring full(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length =
        GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    const bool fits = length < full.size();
    full.resize(length);
    if (fits) return full;
  }
}

std::wstring NativePath(const std::string& path) {
  std::wstring full = FullPath(path);
  if (full.size() < kLongPath || full.starts_with(L"\\\\?\\") || full.starts_with(L"\\\\.\\"))
    return full;
  if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC" + full.substr(1);
  return L"\\\\?\\" + full;
}

std::string AnsiPath(const std::string& path) {
  std::string ansi = ToAnsi(path);
  if (FromAnsi(ansi) == path) return ansi;
  const std::wstring full = FullPath(path);
  std::wstring changed;
  for (std::size_t start = 0; start < full.size();) {
    const std::size_t end = std::min(full.find(L'\\', start), full.size());
    std::wstring name = full.substr(start, end - start);
    if (!HasAnsiForm(name)) name = ShortNameOf(full.substr(0, end));
    if (name.empty() && end > start) return ansi;
    changed += name + full.substr(end, 1);
    start = end + 1;
  }
  return ToAnsi(FromWide(changed));
}

std::wstring SystemFolder() {
  return FolderFrom(GetSystemDirectoryW);
}

std::wstring WindowsFolder() {
  return FolderFrom(GetWindowsDirectoryW);
}

}  // namespace platform
