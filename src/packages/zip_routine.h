#pragma once

#include <cstdint>

namespace tmw {

class TmZipper;

// Runs the companion library's zip interface with the zipper's files and options (module mZipper).
// If the library is missing or cannot be initialised, shows a message box and returns an error.
std::int32_t RunZipRoutine(const TmZipper& zipper);

}  // namespace tmw
