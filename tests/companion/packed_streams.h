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
  void RememberAgain(unsigned index, std::uint32_t length) {
    std::rotate(distances_.begin(), distances_.begin() + index, distances_.begin() + index + 1);
    length_ = length;
    content.Copy(distances_[0], length);
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
  }
  void Literal(std::uint8_t byte) override {
    block_.Put(0, byte);
    content.bytes.push_back(byte);
  }
  void Match(std::uint32_t distance, std::uint32_t length) override {
    PutLength(0, 262, length - (distance > 0x100) - (distance > 0x2000) - (distance > 0x40000));
    const std::uint32_t from = distance - 1;
    if (from < 4) {
      block_.Put(1, from);
    } else {
      const unsigned high = HighestBit(from);
      const unsigned bits = high - 1;
      block_.Put(1, 2 * high + ((from >> bits) & 1U));
      const std::uint32_t extra = from & ((1U << bits) - 1);
      if (bits >= 4) {
        block_.PutPlain(extra >> 4U, bits - 4);
        block_.Put(2, extra & 15U);
      } else {
        block_.PutPlain(extra, bits);
      }
    }
    Remember(distance, length);
  }
  void RepeatDistance(unsigned index, std::uint32_t length) override {
    block_.Put(0, 258 + index);
    PutLength(3, 0, length);
    RememberAgain(index, length);
  }
  void RepeatLast() override {
    block_.Put(0, 257);
    content.Copy(distances_[0], length_);
  }
  void Filter(std::uint32_t start, std::uint32_t length, std::uint32_t kind,
              std::uint32_t channels) {
    block_.Put(0, 256);
    for (std::uint32_t number : {start, length}) {
      const unsigned bytes = number == 0 ? 1 : HighestBit(number) / 8 + 1;
      block_.PutPlain(bytes - 1, 2);
      for (unsigned i = 0; i < bytes; ++i, number >>= 8U)
        block_.PutPlain(number & 0xFFU, 8);
    }
    block_.PutPlain(kind, 3);
    if (kind == 0) block_.PutPlain(channels - 1, 5);
  }
  // Of three blocks the second goes on with the codes of the first.
  void EndBlock(bool is_last) override {
    const bool has_tables = number_ % 3 != 1;
    BitWriter out;
    if (has_tables) {
      lengths_ = block_.Lengths(number_ % 3 == 0);
      PutLengths(out, PerSymbol(lengths_.size()), lengths_, number_ % 2 == 0);
    }
    ++number_;
    block_.Write(out, lengths_);
    const std::size_t bits = out.size();
    out.Align();
    const auto length = static_cast<std::uint32_t>(out.bytes().size());
    const unsigned length_bytes = length == 0 ? 1 : HighestBit(length) / 8 + 1;
    const std::uint32_t flags = static_cast<std::uint32_t>((bits + 7) % 8) |
                                (length_bytes - 1) << 3U | (is_last ? 0x40U : 0U) |
                                (has_tables ? 0x80U : 0U);
    std::uint32_t check = 0x5AU ^ flags;
    for (unsigned i = 0; i < length_bytes; ++i)
      check ^= length >> (8 * i);
    packed_.insert(packed_.end(),
                   {static_cast<std::uint8_t>(flags), static_cast<std::uint8_t>(check)});
    for (unsigned i = 0; i < length_bytes; ++i)
      packed_.push_back(static_cast<std::uint8_t>(length >> (8 * i)));
    packed_.insert(packed_.end(), out.bytes().begin(), out.bytes().end());
  }
  Bytes Finish() override { return std::exchange(packed_, {}); }

 private:
  void PutLength(unsigned table, std::uint32_t first_symbol, std::uint32_t length) {
    const std::uint32_t from = length - 2;
    if (from < 8) return block_.Put(table, first_symbol + from);
    const unsigned bits = HighestBit(from) - 2;
    block_.Put(table, first_symbol + 4 * (bits + 1) + ((from >> bits) & 3U));
    block_.PutPlain(from & ((1U << bits) - 1), bits);
  }

  SymbolBlock block_{{306, 64, 16, 44}};
  PerSymbol lengths_;
  unsigned number_ = 0;
  Bytes packed_;
};

class Rar3Writer final : public StreamWriter {
 public:
  Rar3Writer() {
    entry.version = 29;
    entry.method = 3;
  }
  void Literal(std::uint8_t byte) override {
    block_.Put(0, byte);
    content.bytes.push_back(byte);
  }
  void Match(std::uint32_t distance, std::uint32_t length) override {
    if (length == 2) {
      PutSlot(0, 263, kShorts, distance - 1);
    } else {
      PutSlot(0, 271, kLengths, length - 3 - (distance >= 0x2000) - (distance >= 0x40000));
      PutDistance(distance - 1);
    }
    Remember(distance, length);
  }
  void RepeatDistance(unsigned index, std::uint32_t length) override {
    block_.Put(0, 259 + index);
    PutSlot(3, 0, kLengths, length - 2);
    RememberAgain(index, length);
  }
  void RepeatLast() override {
    block_.Put(0, 258);
    content.Copy(distances_[0], length_);
  }
  void Declaration(std::uint8_t flags, const Bytes& bytes) {
    block_.Put(0, 257);
    block_.PutPlain(flags | 7U, 8);
    block_.PutPlain(static_cast<std::uint32_t>(bytes.size()), 16);
    for (const std::uint8_t byte : bytes)
      block_.PutPlain(byte, 8);
  }
  // The codes stay valid for the next entry; another block of the same entry has its own. Every
  // second table is stored as differences to the one before.
  void EndBlock(bool is_last) override {
    block_.Put(0, 256);
    block_.PutPlain(is_last ? 0 : 1, 1);
    if (is_last) block_.PutPlain(0, 1);
    if (needs_tables_) {
      out_.Align();
      out_.Put(number_ % 2, 2);  // prefix codes
      const PerSymbol before = std::exchange(lengths_, block_.Lengths(is_last));
      PutLengths(out_, number_ % 2 == 0 ? PerSymbol(404) : before, lengths_, number_ % 4 < 2);
      ++number_;
    }
    block_.Write(out_, lengths_);
    needs_tables_ = !is_last;
    low_ = 0;
    same_low_ = 0;
  }
  Bytes Finish() override { return std::exchange(out_, {}).bytes(); }

 private:
  struct Slots {
    std::vector<std::uint32_t> bases;
    std::vector<unsigned> bits;
  };
  static const Slots kLengths;
  static const Slots kShorts;

  void PutSlot(unsigned table, std::uint32_t first_symbol, const Slots& slots,
               std::uint32_t value) {
    const auto above = std::upper_bound(slots.bases.begin(), slots.bases.end(), value);
    const auto slot = static_cast<std::size_t>(above - slots.bases.begin()) - 1;
    block_.Put(table, first_symbol + static_cast<std::uint32_t>(slot));
    block_.PutPlain(value - slots.bases[slot], slots.bits[slot]);
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
    block_.Put(1, slot);
    const std::uint32_t extra = from & ((1U << bits) - 1);
    if (slot < 10) return block_.PutPlain(extra, bits);
    block_.PutPlain(extra >> 4U, bits - 4);
    if (same_low_ > 0) {
      --same_low_;
    } else if ((extra & 15U) == low_) {
      block_.Put(2, 16);
      same_low_ = 15;
    } else {
      low_ = extra & 15U;
      block_.Put(2, low_);
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
  SymbolBlock block_{{299, 60, 17, 28}};
  PerSymbol lengths_ = PerSymbol(404);
  bool needs_tables_ = true;
  unsigned number_ = 0;
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
