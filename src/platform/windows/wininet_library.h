#pragma once

#include <string>

#include "foundation/unique_handle.h"
#include "platform/windows/windows_headers.h"
#include "ports/outcome.h"
// The system's headers come first: this one builds on them.
#include <wininet.h>

namespace platform {

// The calls of WinINet that the internet port makes.
struct WinInetCalls {
  decltype(&InternetCloseHandle) close = nullptr;
  decltype(&InternetOpenA) open = nullptr;
  decltype(&InternetOpenUrlA) open_url = nullptr;
  decltype(&HttpQueryInfoA) query = nullptr;
  decltype(&InternetQueryDataAvailable) query_available = nullptr;
  decltype(&InternetReadFile) read = nullptr;
  decltype(&InternetSetFilePointer) seek = nullptr;
  decltype(&InternetSetOptionA) set_option = nullptr;
};

// Loads the library and keeps it until the process ends, since a call may still be under way in it.
// An empty path names the library in the system's folder: the updater may run elevated, and must
// not load a file of this name that somebody has put beside it.
ports::Outcome<WinInetCalls> LoadWinInet(const std::string& path);

// A handle and the library that knows it.
struct LibraryHandle {
  decltype(&InternetCloseHandle) close = nullptr;
  HINTERNET handle = nullptr;

  bool operator==(const LibraryHandle&) const = default;
};

struct InternetHandleTraits {
  using Type = LibraryHandle;
  static Type Invalid() { return {}; }
  static void Close(Type owned) { owned.close(owned.handle); }
};
using InternetHandle = tmw::UniqueHandle<InternetHandleTraits>;

}  // namespace platform
