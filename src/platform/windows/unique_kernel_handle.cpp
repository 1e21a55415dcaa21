#include "platform/windows/unique_kernel_handle.h"

#include "platform/windows/windows_headers.h"

namespace platform {

void KernelHandleTraits::Close(Type handle) {
  CloseHandle(handle);
}

}  // namespace platform
