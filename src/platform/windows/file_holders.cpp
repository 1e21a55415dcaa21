#include "platform/windows/file_holders.h"

#include <algorithm>
#include <type_traits>

#include "platform/windows/native_path.h"
#include "platform/windows/wide.h"

namespace platform {
namespace {

constexpr int kListAttempts = 3;  // programs may start while they are listed

RestartManager Load() {
  RestartManager manager;
  // Only the system's own: the folder of the temporary copy may hold planted files.
  wchar_t folder[MAX_PATH] = {};
  const UINT length = GetSystemDirectoryW(folder, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return manager;
  const HMODULE library = LoadLibraryW((std::wstring(folder) + L"\\rstrtmgr.dll").c_str());
  if (library == nullptr) return manager;
  const auto find = [library](auto& function, const char* name) {
    // Through void*: the compiler warns about a direct cast.
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(
        reinterpret_cast<void*>(GetProcAddress(library, name)));
    return function != nullptr;
  };
  const bool is_whole = find(manager.start, "RmStartSession") &&
                        find(manager.add_files, "RmRegisterResources") &&
                        find(manager.list, "RmGetList") && find(manager.end, "RmEndSession");
  return is_whole ? manager : RestartManager();
}

std::vector<RM_PROCESS_INFO> List(DWORD session, const RestartManager& manager) {
  std::vector<RM_PROCESS_INFO> found;
  for (int attempt = 0; attempt < kListAttempts; ++attempt) {
    UINT needed = 0;
    auto count = static_cast<UINT>(found.size());
    DWORD reasons = 0;
    const DWORD code = manager.list(session, &needed, &count, found.data(), &reasons);
    if (code == ERROR_SUCCESS) {
      found.resize(std::min<std::size_t>(count, found.size()));
      return found;
    }
    if (code != ERROR_MORE_DATA) break;
    found.resize(needed);
  }
  return {};
}

}  // namespace

const RestartManager& RestartManager::OfSystem() {
  static const RestartManager kManager = Load();
  return kManager;
}

std::vector<std::string> HoldersOf(const std::string& path, const RestartManager& manager) {
  std::vector<std::string> names;
  DWORD session = 0;
  wchar_t key[CCH_RM_SESSION_KEY + 1] = {};
  if (manager.start == nullptr || manager.start(&session, 0, key) != ERROR_SUCCESS) return names;
  const std::wstring file = FullPath(path);
  const wchar_t* const files[] = {file.c_str()};
  // The call only reads the names, but does not say so.
  if (manager.add_files(session, 1, const_cast<LPCWSTR*>(files), 0, nullptr, 0, nullptr) ==
      ERROR_SUCCESS) {
    for (const RM_PROCESS_INFO& process : List(session, manager)) {
      std::string name = FromWide(static_cast<const wchar_t*>(process.strAppName));
      if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(std::move(name));
    }
  }
  manager.end(session);
  return names;
}

}  // namespace platform
