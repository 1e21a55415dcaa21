#include "platform/windows/save_box.h"

#include <algorithm>
#include <array>

#include "platform/windows/wide.h"
// The system's headers come first: this builds on them.
#include <commdlg.h>

namespace platform {
namespace {

constexpr std::size_t kLongestPath = 32768;  // with the terminating zero

}  // namespace

std::optional<std::string> ShowSaveBox(HWND owner, const std::string& title,
                                       const std::string& suggested_name) {
  std::wstring path = ToWide(suggested_name);
  const std::size_t dot = path.rfind(L'.');
  const std::wstring ending = dot == std::wstring::npos ? L"" : path.substr(dot + 1);
  path.resize(kLongestPath);
  const std::wstring wide_title = ToWide(title);
  OPENFILENAMEW request{};
  request.lStructSize = sizeof(request);
  request.hwndOwner = owner;
  request.lpstrTitle = wide_title.c_str();
  request.lpstrFile = path.data();
  request.nMaxFile = static_cast<DWORD>(path.size());
  request.lpstrDefExt = ending.c_str();
  request.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
  if (GetSaveFileNameW(&request) == FALSE) return std::nullopt;
  return FromWide(path.c_str());
}

}  // namespace platform
