#include "companion/rar/huffman.h"

#include <algorithm>

namespace companion::rar {

void HuffmanTable::Build(std::span<const std::uint8_t> lengths) {
  size_ = static_cast<std::uint32_t>(lengths.size());
  std::array<std::uint32_t, kMaxLength + 1> counts{};
  for (const std::uint8_t length : lengths)
    ++counts[length];
  counts[0] = 0;
  limits_[0] = 0;
  firsts_[0] = 0;
  for (unsigned length = 1; length <= kMaxLength; ++length) {
    limits_[length] = limits_[length - 1] + (counts[length] << (16U - length));
    firsts_[length] = firsts_[length - 1] + counts[length - 1];
  }
  symbols_.fill(0);
  auto next = firsts_;
  for (std::uint32_t symbol = 0; symbol < size_; ++symbol) {
    if (lengths[symbol] != 0)
      symbols_[next[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
  }

  std::uint32_t filled = 0;
  for (unsigned length = 1; length <= kQuickBits; ++length) {
    const std::uint32_t repeat = 1U << (kQuickBits - length);
    for (std::uint32_t i = 0; i < counts[length] && filled < quick_.size(); ++i) {
      const std::uint32_t symbol = symbols_[firsts_[length] + i];
      const auto entry = static_cast<std::uint16_t>(symbol << 4U | length);
      const std::uint32_t until = std::min<std::uint32_t>(filled + repeat, 1U << kQuickBits);
      std::fill_n(&quick_[filled], until - filled, entry);
      filled = until;
    }
  }
  std::fill_n(quick_.data() + filled, quick_.size() - filled, std::uint16_t{0});
}

std::uint32_t HuffmanTable::DecodeSlowly(std::uint32_t bits, BitCursor& in) const {
  unsigned length = kQuickBits + 1;
  while (length < kMaxLength && bits >= limits_[length])
    ++length;
  in.Skip(length);
  const std::uint32_t index = firsts_[length] + ((bits - limits_[length - 1]) >> (16U - length));
  return symbols_[index < size_ ? index : 0];
}

}  // namespace companion::rar
