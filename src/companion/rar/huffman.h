#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "companion/rar/bit_reader.h"

namespace companion::rar {

// A canonical prefix code with lengths up to 15 bits. Codes that are incomplete or have too many
// symbols are not refused: every bit pattern stands for some symbol and takes 1 to 15 bits, as the
// format's own tools read it. Damage shows in the checksum.
class HuffmanTable {
 public:
  static constexpr unsigned kMaxLength = 15;
  static constexpr std::size_t kMaxSymbols = 306;

  // One length per symbol, 0 to 15; 0: the symbol does not occur.
  void Build(std::span<const std::uint8_t> lengths);

  // Decodes a symbol, less than the number of symbols. Consumes at most 15 bits.
  std::uint32_t Decode(BitCursor& in) const {
    const std::uint64_t bits = in.Peek();
    const std::uint16_t entry = quick_[static_cast<std::size_t>(bits >> (64U - kQuickBits))];
    if (entry != 0) {
      in.Skip(entry & 15U);
      return entry >> 4U;
    }
    return DecodeSlowly(static_cast<std::uint32_t>(bits >> 48U), in);
  }

 private:
  static constexpr unsigned kQuickBits = 10;

  std::uint32_t DecodeSlowly(std::uint32_t bits, BitCursor& in) const;

  // symbol << 4 | length, indexed by the next bits; 0 for longer codes.
  std::array<std::uint16_t, 1U << kQuickBits> quick_{};
  std::array<std::uint32_t, kMaxLength + 1>
      limits_{};  // first 16-bit value after the codes of a length
  std::array<std::uint32_t, kMaxLength + 1> firsts_{};  // index of the first symbol of a length
  std::array<std::uint16_t, kMaxSymbols> symbols_{};    // by length, then by value
  std::uint32_t size_ = 0;
};

}  // namespace companion::rar
