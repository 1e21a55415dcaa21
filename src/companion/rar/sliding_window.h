#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

namespace companion::rar {

// The last bytes of the unpacked stream, from which matches are copied. Memory is allocated as the
// stream grows, so a header that asks for a large dictionary costs nothing by itself, and kept from
// entry to entry.
class SlidingWindow {
 public:
  // Longest match of any format.
  static constexpr std::size_t kMaxMatch = 0x1004;
  static constexpr std::size_t kMinSize = std::size_t{1} << 18U;

  // Sets how far back matches may reach, rounded up to a power of two. The content stays.
  void SetDictionary(std::uint64_t size);
  // Drops the content.
  void Reset() { position_ = 0; }

  // Bytes since Reset.
  std::uint64_t Position() const { return position_; }

  // Makes room so that up to `length` bytes can be appended and read back with Range. A hint at how
  // many more will follow lets memory grow in one step.
  void Reserve(std::size_t length, std::uint64_t expected);

  // The bytes from `from` (not older than the window) up to the position, in up to two pieces.
  template <typename Consume>
  void ForEachPiece(std::uint64_t from, Consume consume) const {
    while (from < position_) {
      const std::size_t begin = static_cast<std::size_t>(from) & mask_;
      const std::size_t length =
          static_cast<std::size_t>(std::min<std::uint64_t>(position_ - from, mask_ + 1 - begin));
      consume(std::span<const std::uint8_t>(data_.get() + begin, length));
      from += length;
    }
  }

  // What a decoding loop works on: it takes a copy, appends to it and stores it back.
  struct Cursor {
    std::uint8_t* data;
    std::size_t mask;
    std::uint64_t position;
    std::uint64_t reach;  // the dictionary's size

    void Put(std::uint8_t byte) { data[static_cast<std::size_t>(position++) & mask] = byte; }

    // Returns false if the distance reaches beyond the beginning. The length is at most kMaxMatch.
    bool Copy(std::uint64_t distance, std::size_t length) {
      if (distance > position || distance > reach || distance == 0) return false;
      const std::size_t to = static_cast<std::size_t>(position) & mask;
      const std::size_t from = static_cast<std::size_t>(position - distance) & mask;
      position += length;
      if (std::max(to, from) + length > mask + 1) {
        CopyAroundTheEnd(to, from, length);
      } else if (distance == 1) {
        std::memset(data + to, data[from], length);
      } else {
        CopyForward(data + to, data + from, distance, length);
      }
      return true;
    }

   private:
    // Copies byte by byte, since a match may overlap what it writes. Never writes more than asked:
    // the bytes ahead are the oldest of a full window and still needed.
    static void CopyForward(std::uint8_t* to, const std::uint8_t* from, std::uint64_t distance,
                            std::size_t length) {
      if (distance >= 8) {
        for (; length >= 8; length -= 8, to += 8, from += 8)
          std::memcpy(to, from, 8);
      }
      for (; length > 0; --length)
        *to++ = *from++;
    }
    void CopyAroundTheEnd(std::size_t to, std::size_t from, std::size_t length) {
      for (; length > 0; --length)
        data[to++ & mask] = data[from++ & mask];
    }
  };
  Cursor Take() { return {data_.get(), mask_, position_, dictionary_}; }
  void Set(const Cursor& cursor) { position_ = cursor.position; }

 private:
  struct Free {
    void operator()(std::uint8_t* memory) const { std::free(memory); }
  };

  void Grow(std::size_t size);

  std::unique_ptr<std::uint8_t, Free> data_;
  std::size_t mask_ = 0;  // allocated size - 1; nothing is allocated while data_ is empty
  std::uint64_t dictionary_ = 0;
  std::uint64_t position_ = 0;
};

}  // namespace companion::rar
