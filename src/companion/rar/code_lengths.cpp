#include "companion/rar/code_lengths.h"

#include <algorithm>
#include <array>

#include "companion/rar/failure.h"
#include "companion/rar/huffman.h"

namespace companion::rar {
namespace {

constexpr std::size_t kCodes = 20;

// 20 lengths of 4 bits; 15 begins a run of zeros, unless 0 follows it.
HuffmanTable ReadCode(BitReader& reader) {
  std::array<std::uint8_t, kCodes> lengths{};
  for (std::size_t i = 0; i < kCodes;) {
    const auto length = static_cast<std::uint8_t>(reader.Take(4));
    if (length != 15) {
      lengths[i++] = length;
      continue;
    }
    const std::uint32_t zeros = reader.Take(4);
    if (zeros == 0) {
      lengths[i++] = 15;
    } else {
      i += zeros + 2;
    }
  }
  HuffmanTable table;
  table.Build(lengths);
  return table;
}

}  // namespace

void ReadCodeLengths(BitReader& reader, bool add, std::span<std::uint8_t> lengths) {
  const HuffmanTable code = ReadCode(reader);
  for (std::size_t i = 0; i < lengths.size();) {
    reader.UncheckedBits();
    const std::uint32_t symbol = code.Decode(reader.Cursor());
    if (symbol < 16) {
      lengths[i] = static_cast<std::uint8_t>((symbol + (add ? lengths[i] : 0U)) & 15U);
      ++i;
      continue;
    }
    // 16 and 17 repeat the length before, 18 and 19 zero; the odd ones have long runs.
    const std::uint32_t run = symbol % 2 == 0 ? reader.Take(3) + 3 : reader.Take(7) + 11;
    if (symbol < 18 && i == 0) throw Failure{ports::kRarBadData};
    const std::uint8_t value = symbol < 18 ? lengths[i - 1] : std::uint8_t{0};
    const std::size_t until = std::min(lengths.size(), i + run);
    std::fill(lengths.begin() + static_cast<std::ptrdiff_t>(i),
              lengths.begin() + static_cast<std::ptrdiff_t>(until), value);
    i = until;
  }
}

}  // namespace companion::rar
