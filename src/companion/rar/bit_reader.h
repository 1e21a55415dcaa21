#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "companion/rar/decoder.h"

namespace companion::rar {

// A position in a bit stream whose first bit is the highest of the first byte. Small enough to be
// copied into a decoding loop, where the compiler keeps it in registers. Reads up to 8 bytes after
// the position; whoever provides the cursor keeps that much readable.
struct BitCursor {
  const std::uint8_t* data = nullptr;
  std::size_t bit = 0;

  // The next 57 bits or more, at the top.
  std::uint64_t Peek() const {
    std::uint64_t word = 0;
    std::memcpy(&word, data + (bit >> 3U), sizeof word);
    if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
    return word << (bit & 7U);
  }
  // 0 to 32 bits.
  std::uint32_t Peek(unsigned count) const {
    return static_cast<std::uint32_t>(Peek() >> 1U >> (63U - count));
  }
  void Skip(unsigned count) { bit += count; }
  std::uint32_t Take(unsigned count) {
    const std::uint32_t value = Peek(count);
    bit += count;
    return value;
  }
};

// Packed bytes as bits, buffered. After the end of the source zeros are read; consuming them means
// that the data is damaged.
class BitReader {
 public:
  BitReader();

  // Begins a new packed stream. The source must outlive it.
  void Begin(PackedSource& source);

  // The hot loops copy the cursor, consume at most UncheckedBits() of the copy and store it back.
  BitCursor& Cursor() { return cursor_; }

  // The number of bits that can be consumed without checking for the end of the stream; refills the
  // buffer if needed. At least kReserveBits unless the stream ends; may be negative after the end.
  std::ptrdiff_t UncheckedBits() {
    const auto left =
        static_cast<std::ptrdiff_t>(end_ * 8) - static_cast<std::ptrdiff_t>(cursor_.bit);
    return left >= kReserveBits ? left : Refill();
  }
  // Throws if bits after the end of the stream have been consumed.
  void CheckNotOverrun() const {
    if (cursor_.bit > end_ * 8) ThrowOverrun();
  }

  // Reads 0 to 32 bits with all checks, for headers and tables.
  std::uint32_t Take(unsigned count) {
    UncheckedBits();
    const std::uint32_t value = cursor_.Take(count);
    CheckNotOverrun();
    return value;
  }
  // Reads a byte; the position must be at the beginning of one.
  std::uint8_t TakeByte() {
    if (cursor_.bit >= byte_limit_) return TakeByteSlowly();
    const std::uint8_t value = cursor_.data[cursor_.bit >> 3U];
    cursor_.bit += 8;
    return value;
  }
  void AlignToByte() { cursor_.bit = (cursor_.bit + 7) & ~std::size_t{7}; }

  // Bits since the beginning of the stream.
  std::uint64_t Position() const { return dropped_ * 8 + cursor_.bit; }
  // Moves to a position ahead, or back within the reserve.
  void MoveTo(std::uint64_t position);

  static constexpr std::ptrdiff_t kReserveBits = 256;

 private:
  std::ptrdiff_t Refill();
  std::uint8_t TakeByteSlowly();
  [[noreturn]] static void ThrowOverrun();

  PackedSource* source_ = nullptr;
  std::vector<std::uint8_t> buffer_;
  std::size_t end_ = 0;         // bytes of the stream in the buffer
  std::size_t byte_limit_ = 0;  // end_ in bits
  std::uint64_t dropped_ = 0;   // bytes of the stream before the buffer
  bool source_ended_ = true;
  BitCursor cursor_;
};

}  // namespace companion::rar
