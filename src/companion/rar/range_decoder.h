#pragma once

#include <cstdint>

#include "companion/rar/bit_reader.h"
#include "companion/rar/failure.h"

namespace companion::rar {

// The arithmetic decoder of RAR 3's PPMd blocks (a carry-less range coder, 32 bits).
class RangeDecoder {
 public:
  // Reads the first bytes of a block.
  void Begin(BitReader& reader) {
    reader_ = &reader;
    low_ = 0;
    range_ = 0xFFFFFFFF;
    code_ = 0;
    for (int i = 0; i < 4; ++i)
      code_ = code_ << 8U | reader.TakeByte();
  }

  // The position of the next symbol in a range of `total`; too large in damaged data.
  std::uint32_t Threshold(std::uint32_t total) {
    range_ /= total;
    if (range_ == 0) throw Failure{ports::kRarBadData};
    return (code_ - low_) / range_;
  }

  // Consumes a symbol, which has the part [start, start + size) of the total last asked for.
  void Take(std::uint32_t start, std::uint32_t size) {
    constexpr std::uint32_t kTop = 1U << 24U;
    constexpr std::uint32_t kBottom = 1U << 15U;
    low_ += start * range_;
    range_ *= size;
    for (;;) {
      if ((low_ ^ (low_ + range_)) >= kTop) {
        if (range_ >= kBottom) return;
        range_ = (0U - low_) & (kBottom - 1);
      }
      code_ = code_ << 8U | reader_->TakeByte();
      range_ <<= 8U;
      low_ <<= 8U;
    }
  }

 private:
  BitReader* reader_ = nullptr;
  std::uint32_t low_ = 0;
  std::uint32_t range_ = 0;
  std::uint32_t code_ = 0;
};

}  // namespace companion::rar
