#pragma once

#include <cstdint>
#include <functional>

namespace companion::zip {

// Fills the buffer; returns less than asked only at the end of the content. May throw.
using ContentReader = std::function<std::size_t(std::uint8_t* buffer, std::size_t length)>;
using PackedWriter = std::function<void(const std::uint8_t* data, std::size_t length)>;

struct DeflateTotals {
  std::uint32_t crc = 0;  // of the content
  std::uint64_t size = 0;
  std::uint64_t packed_size = 0;
};

// Makes one raw deflate stream of the content. Pieces are deflated in parallel on the machine's
// cores, each primed with the 32 KiB before it, so that the stream is hardly longer than one made
// in a single run. Memory does not depend on the length of the content. level: 1 to 9.
DeflateTotals DeflateInParallel(const ContentReader& read, const PackedWriter& write, int level);

// The same interface for content that is stored unchanged.
DeflateTotals Store(const ContentReader& read, const PackedWriter& write);

}  // namespace companion::zip
