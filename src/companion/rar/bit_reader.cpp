#include "companion/rar/bit_reader.h"

#include <algorithm>

#include "companion/rar/failure.h"

namespace companion::rar {
namespace {

constexpr std::size_t kBufferSize = 64U << 10U;
// Zeros after the data: enough for one symbol with all its extra bits and the 8 bytes of a peek.
constexpr std::size_t kPadding = 64;
// Bytes before the position that a refill keeps, so that MoveTo can go back a little.
constexpr std::size_t kKept = 32;
constexpr std::ptrdiff_t kRangeCoderBits = 64;

}  // namespace

BitReader::BitReader() : buffer_(kBufferSize + kPadding) {
  cursor_.data = buffer_.data();
}

void BitReader::Begin(PackedSource& source) {
  source_ = &source;
  end_ = 0;
  byte_limit_ = 0;
  dropped_ = 0;
  source_ended_ = false;
  cursor_.bit = 0;
  std::fill_n(buffer_.begin(), kPadding, std::uint8_t{0});
}

std::ptrdiff_t BitReader::Refill() {
  if (!source_ended_) {
    const std::size_t position = std::min(cursor_.bit >> 3U, end_);
    const std::size_t drop = position > kKept ? position - kKept : 0;
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(drop),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= drop;
    dropped_ += drop;
    cursor_.bit -= drop * 8;
    while (!source_ended_ && end_ < kBufferSize) {
      const std::size_t got = source_->Read(buffer_.data() + end_, kBufferSize - end_);
      source_ended_ = got == 0;
      end_ += got;
    }
    byte_limit_ = end_ * 8;
    std::fill_n(buffer_.begin() + static_cast<std::ptrdiff_t>(end_), kPadding, std::uint8_t{0});
  }
  // A position far beyond the end means damaged data; the padding covers what one symbol can take.
  if (cursor_.bit > (end_ + kPadding / 2) * 8) ThrowOverrun();
  return static_cast<std::ptrdiff_t>(end_ * 8) - static_cast<std::ptrdiff_t>(cursor_.bit);
}

std::uint8_t BitReader::TakeByteSlowly() {
  // A range coder may look a little beyond the end.
  if (UncheckedBits() < 8 - kRangeCoderBits) ThrowOverrun();
  const std::uint8_t value = cursor_.data[cursor_.bit >> 3U];
  cursor_.bit += 8;
  return value;
}

void BitReader::MoveTo(std::uint64_t position) {
  const std::uint64_t first = dropped_ * 8;
  if (position < first) ThrowOverrun();
  while (position > dropped_ * 8 + byte_limit_) {
    cursor_.bit = byte_limit_;
    if (Refill() <= 0) ThrowOverrun();
  }
  cursor_.bit = static_cast<std::size_t>(position - dropped_ * 8);
}

void BitReader::ThrowOverrun() {
  throw Failure{ports::kRarBadData};
}

}  // namespace companion::rar
