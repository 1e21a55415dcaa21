#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <random>
#include <span>
#include <utility>
#include <vector>

#include "companion/rar/decoder.h"
#include "companion/rar/failure.h"

// Packed streams written by the tests, with prefix codes by frequency, and their content.
namespace tests {

using Bytes = std::vector<std::uint8_t>;

// The same numbers on every system.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::uint32_t operator()() { return static_cast<std::uint32_t>(engine_()); }

 private:
  std::mt19937 engine_;
};

class BitWriter {
 public:
  void Put(std::uint32_t value, unsigned count) {
    for (; count > 0; --count) {
      if (bit_ % 8 == 0) bytes_.push_back(0);
      bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | ((value >> (count - 1)) & 1U)
                                                                    << (7 - bit_ % 8));
      ++bit_;
    }
  }
  std::size_t size() const { return bit_; }
  void Align() { Put(0, static_cast<unsigned>((8 - bit_ % 8) % 8)); }
  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
  std::size_t bit_ = 0;
};

// How often a symbol of each table occurs, or the length of its code.
using PerSymbol = std::vector<std::uint32_t>;

// The lengths of a prefix code; 0 for a symbol that does not occur. The most frequent `steep`
// symbols have 1, 2, ... bits, the others nearly the same number.
inline PerSymbol CodeLengths(const PerSymbol& counts, std::size_t steep) {
  PerSymbol lengths(counts.size());
  std::vector<std::size_t> used;
  for (std::size_t i = 0; i < counts.size(); ++i)
    if (counts[i] > 0) used.push_back(i);
  if (used.empty()) return lengths;
  std::stable_sort(used.begin(), used.end(),
                   [&](std::size_t a, std::size_t b) { return counts[a] > counts[b]; });
  steep = std::min(steep, used.size() - 1);
  const std::size_t rest = used.size() - steep;
  const std::size_t bits = std::max<std::size_t>(std::bit_width(rest - 1), steep == 0 ? 1 : 0);
  const std::size_t shorter = (std::size_t{1} << bits) - rest;
  for (std::size_t i = 0; i < used.size(); ++i) {
    const std::size_t length = i < steep ? i + 1 : steep + bits - (i < steep + shorter ? 1 : 0);
    lengths[used[i]] = static_cast<std::uint32_t>(std::max<std::size_t>(length, 1));
  }
  return lengths;
}

// The symbols of a canonical code as bits.
class PrefixCode {
 public:
  explicit PrefixCode(std::span<const std::uint32_t> lengths)
      : lengths_(lengths.begin(), lengths.end()), codes_(lengths.size()) {
    std::uint32_t next = 0;
    for (unsigned length = 1; length <= 15; ++length, next <<= 1U) {
      for (std::size_t i = 0; i < codes_.size(); ++i)
        if (lengths_[i] == length) codes_[i] = next++;
    }
  }
  void Put(BitWriter& out, std::size_t symbol) const { out.Put(codes_[symbol], lengths_[symbol]); }

 private:
  PerSymbol lengths_;
  PerSymbol codes_;
};

// Code lengths as the formats store them: as differences to the lengths before them, with runs of a
// repeated length (16 short, 17 long) and of zeros (18, 19), in a code whose own 20 lengths come
// first. The steep one has symbols of all lengths up to 15, the longest for the most
// frequent.
inline void PutLengths(BitWriter& out, const PerSymbol& before, const PerSymbol& lengths,
                       bool is_steep) {
  struct Stored {
    std::uint32_t symbol, extra;
  };
  std::vector<Stored> stored;
  PerSymbol counts(20);
  for (std::size_t i = 0, run = 0; i < lengths.size(); i += run) {
    const auto differs = [&](std::uint32_t length) { return length != lengths[i]; };
    run = static_cast<std::size_t>(
        std::find_if(lengths.begin() + static_cast<std::ptrdiff_t>(i), lengths.end(), differs) -
        lengths.begin() - static_cast<std::ptrdiff_t>(i));
    run = std::min<std::size_t>(run, 138);
    const bool repeats = i > 0 && lengths[i - 1] == lengths[i];
    if (run < 3 || (lengths[i] > 0 && !repeats)) run = 1;
    if (run == 1) {
      stored.push_back({(lengths[i] - before[i]) & 15U, 0});
    } else {
      const bool is_long = run > 10;
      stored.push_back({(lengths[i] > 0 ? 16U : 18U) + is_long,
                        static_cast<std::uint32_t>(run - (is_long ? 11 : 3))});
    }
    ++counts[stored.back().symbol];
  }
  for (std::uint32_t& count : counts)
    if (is_steep) count = 1000 - count;
  const PerSymbol code = CodeLengths(counts, is_steep ? 11 : 2);
  for (std::size_t i = 0; i < 20;) {
    std::size_t zeros = 0;
    while (i + zeros < 20 && zeros < 17 && code[i + zeros] == 0)
      ++zeros;
    if (zeros > 2) {
      out.Put(15, 4);
      out.Put(static_cast<std::uint32_t>(zeros - 2), 4);
      i += zeros;
    } else {
      out.Put(code[i], 4);
      if (code[i++] == 15) out.Put(0, 4);
    }
  }
  const PrefixCode prefix_code(code);
  for (const Stored& each : stored) {
    prefix_code.Put(out, each.symbol);
    if (each.symbol >= 16) out.Put(each.extra, each.symbol % 2 == 0 ? 3 : 7);
  }
}

// The symbols of a block, collected so that their codes can be chosen by how often they occur.
class SymbolBlock {
 public:
  explicit SymbolBlock(const std::array<std::size_t, 4>& sizes) : sizes_(sizes) {}

  void Put(unsigned table, std::uint32_t symbol) { parts_.push_back({table, symbol, 0}); }
  void PutPlain(std::uint32_t value, unsigned bits) { parts_.push_back({kPlain, value, bits}); }

  // The lengths of all tables. With every symbol the codes serve another block as well.
  PerSymbol Lengths(bool every_symbol) const {
    PerSymbol all;
    for (unsigned table = 0; table < sizes_.size(); ++table) {
      PerSymbol counts(sizes_[table], every_symbol ? 1 : 0);
      for (const Part& part : parts_)
        if (part.table == table) counts[part.value] += 4;
      const PerSymbol lengths = CodeLengths(counts, 6);
      all.insert(all.end(), lengths.begin(), lengths.end());
    }
    return all;
  }

  // Writes the symbols and forgets them.
  void Write(BitWriter& out, const PerSymbol& all) {
    std::vector<PrefixCode> codes;
    for (std::size_t first = 0; const std::size_t size : sizes_) {
      codes.emplace_back(std::span(all).subspan(first, size));
      first += size;
    }
    for (const Part& part : std::exchange(parts_, {})) {
      if (part.table == kPlain) {
        out.Put(part.value, part.bits);
      } else {
        codes[part.table].Put(out, part.value);
      }
    }
  }

 private:
  static constexpr unsigned kPlain = 4;
  struct Part {
    unsigned table;
    std::uint32_t value;
    unsigned bits;
  };
  std::array<std::size_t, 4> sizes_;
  std::vector<Part> parts_;
};

// The content of a stream, recorded while the stream is written.
struct Content {
  Bytes bytes;
  void Copy(std::size_t distance, std::size_t length) {
    for (; length > 0; --length)
      bytes.push_back(bytes[bytes.size() - distance]);
  }
};

class MemorySource final : public companion::rar::PackedSource {
 public:
  MemorySource(std::span<const std::uint8_t> bytes, std::size_t piece)
      : bytes_(bytes), piece_(piece) {}
  std::size_t Read(std::uint8_t* buffer, std::size_t length) override {
    length = std::min({length, piece_, bytes_.size()});
    std::copy_n(bytes_.begin(), length, buffer);
    bytes_ = bytes_.subspan(length);
    return length;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t piece_;
};

class MemorySink final : public companion::rar::ContentSink {
 public:
  explicit MemorySink(std::uint64_t limit) : limit_(limit) {}
  void Write(const std::uint8_t* data, std::size_t length) override {
    if (length > limit_ - content.size()) throw companion::rar::Failure{ports::kRarBadData};
    content.insert(content.end(), data, data + length);
  }
  Bytes content;

 private:
  std::uint64_t limit_;
};

struct Unpacked {
  int code = 0;
  Bytes content;
};

inline Unpacked Unpack(companion::rar::Decoder& decoder, const companion::rar::Entry& entry,
                       std::span<const std::uint8_t> packed, std::size_t piece = 1000) {
  MemorySource source(packed, piece);
  MemorySink sink(entry.unpacked_size.value_or(64U << 20U));
  Unpacked result;
  try {
    decoder.Decode(entry, source, sink);
  } catch (const companion::rar::Failure& failure) {
    result.code = failure.code;
  }
  result.content = std::move(sink.content);
  return result;
}

}  // namespace tests
