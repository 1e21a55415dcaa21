#pragma once

#include <cstdint>

#include "ports/outcome.h"

namespace tmw {

class TmZipper;

// Runs the companion library's zip interface with the zipper's files and options (module mZipper).
// If the library is missing or cannot be initialised, shows a message box and returns an error.
// system_error: the system's reason for a failure, or 0.
std::int32_t RunZipRoutine(const TmZipper& zipper, ports::SystemCode& system_error);

}  // namespace tmw
