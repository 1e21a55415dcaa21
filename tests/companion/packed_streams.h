#pragma once

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "tests/companion/packed_bits.h"

// Packed entries in both formats, with their content.
namespace tests {

// The same operations in both formats.
class StreamWriter {
 public:
  virtual ~StreamWriter() = default;
  virtual void Literal(std::uint8_t byte) = 0;
  virtual void Match(std::uint32_t distance, std::uint32_t length) = 0;
  virtual void RepeatDistance(unsigned index, std::uint32_t length) = 0;
  virtual void RepeatLast() = 0;
  // Ends the block, and the entry too unless another block follows.
  virtual void EndBlock(bool is_last) = 0;
  virtual Bytes Finish() = 0;

  companion::rar::Entry entry;
  Content content;

 protected:
  void Remember(std::uint32_t distance, std::uint32_t length) {
    distances_ = {distance, distances_[0], distances_[1], distances_[2]};
    length_ = length;
    content.Copy(distance, length);
  }
  std::array<std::uint32_t, 4> distances_{};
  std::uint32_t length_ = 0;
};

inline unsigned HighestBit(std::uint32_t value) {
  unsigned bit = 0;
  while (value >> (bit + 1) != 0)
    ++bit;
  return bit;
}

class Rar5Writer final : public StreamWriter {
 public:
  explicit Rar5Writer(std::uint32_t dictionary_kib = 128) {
    entry.version = 50;
    entry.method = 3;
    entry.dictionary_kib = dictionary_kib;
    BeginBlock();
  }
  void Literal(std::uint8_t byte) override {
    block_.Put(byte, 9);
    content.bytes.push_back(byte);
  }
  void Match(std::uint32_t distance, std::uint32_t length) override {
    const std::uint32_t stored =
        length - (distance > 0x100) - (distance > 0x2000) - (distance > 0x40000);
    PutLength(262, 9, stored);
    const std::uint32_t from = distance - 1;
    if (from < 4) {
      block_.Put(from, 6);
    } else {
      const unsigned high = HighestBit(from);
      const unsigned bits = high - 1;
      block_.Put(2 * high + ((from >> bits) & 1U), 6);
      const std::uint32_t extra = from & ((1U << bits) - 1);
      if (bits >= 4) {
        block_.Put(extra >> 4U, bits - 4);
        block_.Put(extra & 15U, 4);
      } else {
        block_.Put(extra, bits);
      }
    }
    Remember(distance, length);
  }
  void RepeatDistance(unsigned index, std::uint32_t length) override {
    block_.Put(258 + index, 9);
    PutLength(0, 6, length);
    const std::uint32_t distance = distances_[index];
    std::rotate(distances_.begin(), distances_.begin() + index, distances_.begin() + index + 1);
    length_ = length;
    content.Copy(distance, length);
  }
  void RepeatLast() override {
    block_.Put(257, 9);
    content.Copy(distances_[0], length_);
  }
  void Filter(std::uint32_t start, std::uint32_t length, std::uint32_t kind,
              std::uint32_t channels) {
    block_.Put(256, 9);
    for (std::uint32_t number : {start, length}) {
      block_.Put(3, 2);
      for (int i = 0; i < 4; ++i, number >>= 8U)
        block_.Put(number & 0xFFU, 8);
    }
    block_.Put(kind, 3);
    if (kind == 0) block_.Put(channels - 1, 5);
  }
  void EndBlock(bool is_last) override {
    const std::size_t bits = block_.size();
    block_.Align();
    const auto length = static_cast<std::uint32_t>(block_.bytes().size());
    const std::uint32_t flags = static_cast<std::uint32_t>((bits + 7) % 8) | 2U << 3U |
                                (is_last ? 0x40U : 0U) | (has_tables_ ? 0x80U : 0U);
    std::uint32_t check = 0x5AU ^ flags;
    for (unsigned i = 0; i < 3; ++i)
      check ^= length >> (8 * i);
    packed_.insert(packed_.end(),
                   {static_cast<std::uint8_t>(flags), static_cast<std::uint8_t>(check)});
    for (unsigned i = 0; i < 3; ++i)
      packed_.push_back(static_cast<std::uint8_t>(length >> (8 * i)));
    packed_.insert(packed_.end(), block_.bytes().begin(), block_.bytes().end());
    block_ = {};
    has_tables_ = false;
  }
  Bytes Finish() override { return std::exchange(packed_, {}); }

 private:
  void BeginBlock() {
    // 306 symbols: nine bits leave a part of the code unused.
    PutTables(block_, std::array<FlatTable, 4>{{{306, 9}, {64, 6}, {16, 4}, {44, 6}}});
    has_tables_ = true;
  }
  void PutLength(std::uint32_t first_symbol, unsigned symbol_bits, std::uint32_t length) {
    const std::uint32_t from = length - 2;
    if (from < 8) {
      block_.Put(first_symbol + from, symbol_bits);
      return;
    }
    const unsigned bits = HighestBit(from) - 2;
    block_.Put(first_symbol + 4 * (bits + 1) + ((from >> bits) & 3U), symbol_bits);
    block_.Put(from & ((1U << bits) - 1), bits);
  }

  BitWriter block_;
  bool has_tables_ = false;
  Bytes packed_;
};

class Rar3Writer final : public StreamWriter {
 public:
  Rar3Writer() {
    entry.version = 29;
    entry.method = 3;
    BeginBlock();
  }
  void Literal(std::uint8_t byte) override {
    out_.Put(byte, 9);
    content.bytes.push_back(byte);
  }
  void Match(std::uint32_t distance, std::uint32_t length) override {
    if (length == 2) {
      PutSlot(263, 9, kShorts, distance - 1);
    } else {
      PutSlot(271, 9, kLengths, length - 3 - (distance >= 0x2000) - (distance >= 0x40000));
      PutDistance(distance - 1);
    }
    Remember(distance, length);
  }
  void RepeatDistance(unsigned index, std::uint32_t length) override {
    out_.Put(259 + index, 9);
    PutSlot(0, 5, kLengths, length - 2);
    const std::uint32_t distance = distances_[index];
    std::rotate(distances_.begin(), distances_.begin() + index, distances_.begin() + index + 1);
    length_ = length;
    content.Copy(distance, length);
  }
  void RepeatLast() override {
    out_.Put(258, 9);
    content.Copy(distances_[0], length_);
  }
  void Declaration(std::uint8_t flags, const Bytes& bytes) {
    out_.Put(257, 9);
    out_.Put(flags | 7U, 8);
    out_.Put(static_cast<std::uint32_t>(bytes.size()), 16);
    for (const std::uint8_t byte : bytes)
      out_.Put(byte, 8);
  }
  void EndBlock(bool is_last) override {
    out_.Put(256, 9);
    out_.Put(is_last ? 0 : 1, 1);
    if (is_last) {
      out_.Put(0, 1);  // the tables stay valid for the next entry
    } else {
      BeginBlock();
    }
  }
  Bytes Finish() override { return std::exchange(out_, {}).bytes(); }

 private:
  struct Slots {
    std::vector<std::uint32_t> bases;
    std::vector<unsigned> bits;
  };
  static const Slots kLengths;
  static const Slots kShorts;

  void BeginBlock() {
    out_.Align();
    out_.Put(0, 2);  // prefix codes, with new lengths
    PutTables(out_, std::array<FlatTable, 4>{{{299, 9}, {60, 6}, {17, 5}, {28, 5}}});
    low_ = 0;
    same_low_ = 0;
  }
  void PutSlot(std::uint32_t first_symbol, unsigned symbol_bits, const Slots& slots,
               std::uint32_t value) {
    const auto above = std::upper_bound(slots.bases.begin(), slots.bases.end(), value);
    const auto slot = static_cast<std::size_t>(above - slots.bases.begin()) - 1;
    out_.Put(first_symbol + static_cast<std::uint32_t>(slot), symbol_bits);
    out_.Put(value - slots.bases[slot], slots.bits[slot]);
  }
  void PutDistance(std::uint32_t from) {
    std::uint32_t slot = from;
    unsigned bits = 0;
    if (from >= 1U << 20U) {
      bits = 18;
      slot = 48 + ((from - (1U << 20U)) >> bits);
    } else if (from >= 1U << 18U) {
      bits = 16;
      slot = 36 + ((from - (1U << 18U)) >> bits);
    } else if (from >= 4) {
      bits = HighestBit(from) - 1;
      slot = 2 * HighestBit(from) + ((from >> bits) & 1U);
    }
    out_.Put(slot, 6);
    const std::uint32_t extra = from & ((1U << bits) - 1);
    if (slot < 10) return out_.Put(extra, bits);
    out_.Put(extra >> 4U, bits - 4);
    if (same_low_ > 0) {
      --same_low_;
    } else if ((extra & 15U) == low_) {
      out_.Put(16, 5);
      same_low_ = 15;
    } else {
      low_ = extra & 15U;
      out_.Put(low_, 5);
    }
  }

 public:
  // Whether the format can express that distance now: a repeated low part lasts for 16 matches.
  std::uint32_t Expressible(std::uint32_t distance) const {
    const std::uint32_t from = distance - 1;
    return same_low_ == 0 || from < 32 ? distance : ((from & ~15U) | low_) + 1;
  }

 private:
  BitWriter out_;
  std::uint32_t low_ = 0;
  unsigned same_low_ = 0;
};

inline const Rar3Writer::Slots Rar3Writer::kLengths = {
    {0,  1,  2,  3,  4,  5,  6,  7,  8,  10,  12,  14,  16,  20,
     24, 28, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224},
    {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5}};
inline const Rar3Writer::Slots Rar3Writer::kShorts = {{0, 4, 8, 16, 32, 64, 128, 192},
                                                      {2, 2, 3, 4, 5, 6, 6, 6}};

}  // namespace tests
