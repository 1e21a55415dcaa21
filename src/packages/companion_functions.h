#pragma once

#include "platform/companion_library.h"

namespace tmw {

// The companion library's entry points, loaded at the first call. Raises when it cannot be loaded.
const companion::EntryPoints& CompanionFunctions();

}  // namespace tmw
