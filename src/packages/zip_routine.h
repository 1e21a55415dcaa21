#pragma once

#include <cstdint>

namespace tmw {

class TmZipper;

// The library's own words for its results. They are deliberately not attached to errors.
namespace zip_texts {
inline constexpr const char* kUnexpectedEnd = "Unexpected end of ZIP file";
inline constexpr const char* kStructureError = "ZIP file structure error";
inline constexpr const char* kNothingToDo = "Nothing to do for ZIP";
inline constexpr const char* kCannotOpenToWrite = "ZIP couldn't open to write";
}  // namespace zip_texts

// Drives the companion library's zip interface with the zipper's files and options (module
// mZipper). Without the library, or when it cannot be initialised, a box says so and the result is
// not 0.
std::int32_t RunZipRoutine(const TmZipper& zipper);

}  // namespace tmw
