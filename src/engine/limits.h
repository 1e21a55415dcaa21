#pragma once

#include <cstdint>
#include <limits>

#include "engine/engine_texts.h"
#include "foundation/program_error.h"

// Limits of what a server may send, and sums of sizes. All are bytes.
namespace tmw {

// For files whose size is not announced.
inline constexpr std::int64_t kMaxSmallFile = std::int64_t{1} << 20;  // digest, server list
inline constexpr std::int64_t kMaxManifestPackage = std::int64_t{64} << 20;
inline constexpr std::int64_t kMaxManifest = std::int64_t{64} << 20;  // unpacked

// A component may bring twice what is announced, and a mebibyte.
inline constexpr std::int64_t MaxComponent(std::int32_t announced) {
  return std::int64_t{announced} * 2 + (std::int64_t{1} << 20);
}

// Adds to a 32-bit sum. A sum that does not fit is raised as an overflow.
inline void AddChecked(std::int32_t& sum, std::int32_t summand) {
  const std::int64_t result = std::int64_t{sum} + summand;
  if (result > std::numeric_limits<std::int32_t>::max() ||
      result < std::numeric_limits<std::int32_t>::min()) {
    throw ProgramError(kOverflowErrorNumber, engine_texts::kVolumeOverflow);
  }
  sum = static_cast<std::int32_t>(result);
}

}  // namespace tmw
