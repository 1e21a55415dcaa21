#pragma once

#include "foundation/unique_handle.h"
#include "platform/windows/windows_headers.h"
#include "ports/outcome.h"

// Owners of the system's handles, and its error codes in the shape of the ports.
namespace platform {

// For the calls that hand back no handle as 0 (mutexes, processes, threads).
struct KernelHandleTraits {
  using Type = HANDLE;
  static Type Invalid() { return nullptr; }
  static void Close(Type handle) { CloseHandle(handle); }
};
using UniqueKernelHandle = tmw::UniqueHandle<KernelHandleTraits>;

// For the one that hands back INVALID_HANDLE_VALUE (CreateFile).
struct FileHandleTraits : KernelHandleTraits {
  static Type Invalid() { return INVALID_HANDLE_VALUE; }
};
using UniqueFileHandle = tmw::UniqueHandle<FileHandleTraits>;

// The last error of the call on the line before, which is the only place to ask for it.
inline ports::SystemCode LastError() {
  return static_cast<ports::SystemCode>(GetLastError());
}

inline ports::Status StatusOf(BOOL succeeded) {
  return succeeded != FALSE ? ports::Status::Success() : ports::Status::Failure(LastError());
}

}  // namespace platform
