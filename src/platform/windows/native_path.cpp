#include "platform/windows/native_path.h"

#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"

namespace platform {
namespace {

// An ordinary path cannot create folders beyond this length (an 8.3 name must still fit).
constexpr std::size_t kLongPath = 240;

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

}  // namespace platform
