#pragma once

#include <cstdint>

namespace tmw {

class TmZipper;

// Drives the companion library's zip interface with the zipper's files and options (module
// mZipper). Without the library, or when it cannot be initialised, a box says so and the result is
// not 0.
std::int32_t RunZipRoutine(const TmZipper& zipper);

}  // namespace tmw
