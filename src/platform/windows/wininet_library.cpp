#include "platform/windows/wininet_library.h"

#include "platform/windows/handles.h"
#include "platform/windows/native_path.h"
#include "platform/windows/wide.h"

namespace platform {
namespace {

template <typename Call>
bool Find(HMODULE library, const char* name, Call& call) {
  // Through void*: the compiler warns about a direct cast.
  call = reinterpret_cast<Call>(reinterpret_cast<void*>(GetProcAddress(library, name)));
  return call != nullptr;
}

}  // namespace

ports::Outcome<WinInetCalls> LoadWinInet(const std::string& path) {
  using Result = ports::Outcome<WinInetCalls>;
  const std::wstring file = path.empty() ? SystemFolder() + L"\\wininet.dll" : ToWide(path);
  // What the library itself loads comes from its own folder, too.
  HMODULE library = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (library == nullptr) return Result::Failure(LastError());
  WinInetCalls calls;
  const bool is_whole = Find(library, "InternetCloseHandle", calls.close) &&
                        Find(library, "InternetOpenA", calls.open) &&
                        Find(library, "InternetOpenUrlA", calls.open_url) &&
                        Find(library, "HttpQueryInfoA", calls.query) &&
                        Find(library, "InternetQueryDataAvailable", calls.query_available) &&
                        Find(library, "InternetReadFile", calls.read) &&
                        Find(library, "InternetSetFilePointer", calls.seek) &&
                        Find(library, "InternetSetOptionA", calls.set_option);
  return is_whole ? Result::Success(calls) : Result::Failure(ERROR_PROC_NOT_FOUND);
}

}  // namespace platform
