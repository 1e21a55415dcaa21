#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "companion/rar/filter_pipeline.h"

namespace companion::rar {

// The filters of RAR 3. An archive describes each by a program for a virtual machine. Real archives
// contain only a few programs, which are recognised by length and CRC32 and implemented directly.
// Any other is not run: it ends the entry with kRarUnknownFormat.
class Rar3Filters {
 public:
  // Forgets the programs.
  void Reset() {
    programs_.clear();
    last_program_ = 0;
  }

  // Reads one declaration, its flag byte and what follows, and announces the filter. `position` is
  // that of the entry; the block begins there or later.
  void Declare(std::uint8_t flags, std::span<const std::uint8_t> declaration,
               std::uint64_t position, FilterPipeline& pipeline);

 private:
  struct Program {
    FilterKind kind;
    std::uint32_t block_length;  // of its last use
  };
  class Bits;

  std::size_t SelectProgram(bool is_named, Bits& bits, FilterPipeline& pipeline);
  static FilterKind ReadProgram(Bits& bits);

  std::vector<Program> programs_;
  std::size_t last_program_ = 0;
};

}  // namespace companion::rar
