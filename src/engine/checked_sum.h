#pragma once

#include <cstdint>
#include <limits>

#include "foundation/program_error.h"

namespace tmw {

// Adds to a 32-bit sum of bytes. A sum that does not fit is an error, never a wrong figure.
inline void AddChecked(std::int32_t& sum, std::int32_t summand) {
  const std::int64_t result = std::int64_t{sum} + summand;
  if (result > std::numeric_limits<std::int32_t>::max() ||
      result < std::numeric_limits<std::int32_t>::min()) {
    throw ProgramError(kOverflowErrorNumber, "Переполнение: объем загрузки превышает 2 гигабайта.");
  }
  sum = static_cast<std::int32_t>(result);
}

}  // namespace tmw
