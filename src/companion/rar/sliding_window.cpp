#include "companion/rar/sliding_window.h"

#include <bit>

#include "companion/rar/failure.h"

namespace companion::rar {

void SlidingWindow::SetDictionary(std::uint64_t size) {
  dictionary_ = std::bit_ceil(std::max<std::uint64_t>(size, kMinSize));
}

void SlidingWindow::Reserve(std::size_t length, std::uint64_t expected) {
  const std::uint64_t size = data_ ? std::uint64_t{mask_} + 1 : 0;
  if (size >= dictionary_ || position_ + length <= size) return;
  // A declared size is trusted up to a limit; beyond it memory doubles as content arrives.
  constexpr std::uint64_t kBelieved = std::uint64_t{8} << 20U;
  std::uint64_t wanted = std::max(position_ + length, size * 2);
  wanted = std::max(wanted, position_ + std::min(expected, kBelieved));
  wanted = std::min(std::bit_ceil(std::max<std::uint64_t>(wanted, kMinSize)), dictionary_);
  if (wanted > SIZE_MAX) throw Failure{ports::kRarNoMemory};
  Grow(static_cast<std::size_t>(wanted));
}

void SlidingWindow::Grow(std::size_t size) {
  const std::size_t old_size = mask_ + 1;
  if (position_ <= old_size) {
    // Not wrapped around yet: the content is at the beginning.
    auto* grown = static_cast<std::uint8_t*>(std::realloc(data_.get(), size));
    if (grown == nullptr) throw Failure{ports::kRarNoMemory};
    static_cast<void>(data_.release());
    data_.reset(grown);
  } else {
    std::unique_ptr<std::uint8_t, Free> grown(static_cast<std::uint8_t*>(std::malloc(size)));
    if (grown == nullptr) throw Failure{ports::kRarNoMemory};
    std::uint64_t from = position_ - old_size;
    ForEachPiece(from, [&](std::span<const std::uint8_t> piece) {
      // The new size is a multiple of the old one, so a piece is contiguous there as well.
      std::memcpy(grown.get() + (static_cast<std::size_t>(from) & (size - 1)), piece.data(),
                  piece.size());
      from += piece.size();
    });
    // Data beyond the old window is lost; zeros keep a match from reading uninitialised memory.
    const std::size_t begin = static_cast<std::size_t>(position_) & (size - 1);
    for (std::size_t i = 0; i < size - old_size; ++i)
      grown.get()[(begin + i) & (size - 1)] = 0;
    data_ = std::move(grown);
  }
  mask_ = size - 1;
}

}  // namespace companion::rar
