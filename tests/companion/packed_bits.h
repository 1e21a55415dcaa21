#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "companion/rar/decoder.h"
#include "companion/rar/failure.h"

// Packed streams written by the tests, with prefix codes of fixed lengths, and their content.
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

// All codes of a table have one length, so a code is the symbol's number.
struct FlatTable {
  std::uint32_t symbols;
  unsigned bits;
};

// Code lengths as the formats store them: a code of 4 bits for the lengths 0 to 15.
inline void PutTables(BitWriter& out, std::span<const FlatTable> tables) {
  for (unsigned i = 0; i < 16; ++i)
    out.Put(4, 4);
  for (unsigned i = 16; i < 20; ++i)
    out.Put(0, 4);
  for (const FlatTable& table : tables) {
    for (std::uint32_t i = 0; i < table.symbols; ++i)
      out.Put(table.bits, 4);
  }
}

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
    if (length > Left()) throw companion::rar::Failure{ports::kRarBadData};
    content.insert(content.end(), data, data + length);
  }
  std::uint64_t Left() const override { return limit_ - content.size(); }
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
