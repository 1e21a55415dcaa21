#pragma once

#include <unistd.h>

#include "foundation/unique_handle.h"

namespace platform {

struct DescriptorTraits {
  using Type = int;
  static Type Invalid() { return -1; }
  static void Close(Type descriptor) { close(descriptor); }
};

// Owner of a file descriptor.
using UniqueDescriptor = tmw::UniqueHandle<DescriptorTraits>;

}  // namespace platform
