#pragma once

#include "ports/companion_library.h"

namespace tmw {

// The companion library's entry points; the first call loads it. Raises if it cannot be loaded.
const ports::EntryPoints& CompanionFunctions();

}  // namespace tmw
