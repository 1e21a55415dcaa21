#pragma once

#include "ports/companion_library.h"

namespace tmw {

// The companion library's entry points, loaded at the first call. Raises when it cannot be loaded.
const ports::EntryPoints& CompanionFunctions();

}  // namespace tmw
