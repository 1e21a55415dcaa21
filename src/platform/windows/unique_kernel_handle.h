#pragma once

#include "foundation/unique_handle.h"

namespace platform {

// A kernel object's handle, without the system's header: HANDLE is void*.
struct KernelHandleTraits {
  using Type = void*;
  static Type Invalid() { return nullptr; }
  static void Close(Type handle);  // CloseHandle
};

// For the calls that hand back no handle as 0 (mutexes, processes, threads).
using UniqueKernelHandle = tmw::UniqueHandle<KernelHandleTraits>;

}  // namespace platform
