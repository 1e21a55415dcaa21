#pragma once

#include <compare>
#include <cstdint>

#include "jet/file/format.h"

namespace jet::file {

// A row of some data page.
struct RowPointer {
  PageNumber page = 0;
  std::uint8_t row = 0;

  static RowPointer FromWord(std::uint32_t word) {
    return {word >> row_pointer::kPageShift,
            static_cast<std::uint8_t>(word & row_pointer::kRowMask)};
  }
  std::uint32_t ToWord() const { return (page << row_pointer::kPageShift) | row; }
  auto operator<=>(const RowPointer&) const = default;
};

}  // namespace jet::file
