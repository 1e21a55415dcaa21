#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <optional>
#include <string>

#include "companion/rar/ppmd_model.h"
#include "companion/rar/sliding_window.h"
#include "tests/companion/packed_bits.h"

namespace tests {
namespace {

using namespace companion::rar;

// The same operations in both formats.
class StreamWriter {
 public:
  virtual ~StreamWriter() = default;
  virtual void Literal(std::uint8_t byte) = 0;
  virtual void Match(std::uint32_t distance, std::uint32_t length) = 0;
  virtual void RepeatDistance(unsigned index, std::uint32_t length) = 0;
  virtual void RepeatLast() = 0;
  // Ends the block; the entry ends too, or another block follows.
  virtual void EndBlock(bool is_last) = 0;
  virtual Bytes Finish() = 0;

  Entry entry;
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

unsigned HighestBit(std::uint32_t value) {
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
      out_.Put(0, 1);  // the tables hold for the next entry
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
  // Whether the format can express that distance now: a repeated low part holds for 16 matches.
  std::uint32_t Expressible(std::uint32_t distance) const {
    const std::uint32_t from = distance - 1;
    return same_low_ == 0 || from < 32 ? distance : ((from & ~15U) | low_) + 1;
  }

 private:
  BitWriter out_;
  std::uint32_t low_ = 0;
  unsigned same_low_ = 0;
};

const Rar3Writer::Slots Rar3Writer::kLengths = {
    {0,  1,  2,  3,  4,  5,  6,  7,  8,  10,  12,  14,  16,  20,
     24, 28, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224},
    {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5}};
const Rar3Writer::Slots Rar3Writer::kShorts = {{0, 4, 8, 16, 32, 64, 128, 192},
                                               {2, 2, 3, 4, 5, 6, 6, 6}};

// Matches of every reach and length, across the window's end, in several blocks.
void WriteAtRandom(StreamWriter& writer, std::size_t size, std::uint32_t reach,
                   std::uint32_t longest) {
  Random random(5);
  auto* const rar3 = dynamic_cast<Rar3Writer*>(&writer);
  for (int i = 0; i < 600; ++i)
    writer.Literal(static_cast<std::uint8_t>(random()));
  for (std::size_t next_block = size / 3; writer.content.bytes.size() < size;) {
    const auto known =
        static_cast<std::uint32_t>(std::min<std::size_t>(writer.content.bytes.size(), reach));
    std::uint32_t distance = 1 + random() % (1U << (1 + random() % (HighestBit(known))));
    if (random() % 50 == 0) distance = known;
    const std::uint32_t length = 6 + random() % (random() % 4 == 0 ? longest - 5 : 20);
    switch (random() % 8) {
      case 0:
        writer.RepeatLast();
        break;
      case 1:
        writer.RepeatDistance(random() % 4, 2 + length % 200);
        break;
      case 2:
        writer.Match(1 + distance % 250, rar3 != nullptr ? 2 : length);
        break;
      case 3:
        writer.Literal(static_cast<std::uint8_t>(random()));
        break;
      default:
        if (rar3 != nullptr) distance = rar3->Expressible(distance);
        if (distance <= known) writer.Match(distance, length);
    }
    if (writer.content.bytes.size() > next_block) {
      next_block += size / 3;
      if (next_block < size) writer.EndBlock(false);
    }
  }
  writer.EndBlock(true);
}

struct Format {
  const char* name;
  std::unique_ptr<StreamWriter> (*make)();
  std::size_t size;
  std::uint32_t reach;
  std::uint32_t longest;
};
const Format kFormats[] = {
    {"RAR 3", [] { return std::unique_ptr<StreamWriter>(new Rar3Writer); }, 9U << 20U, 4U << 20U,
     255},
    {"RAR 5, small dictionary", [] { return std::unique_ptr<StreamWriter>(new Rar5Writer); },
     2U << 20U, 128U << 10U, 4000},
    {"RAR 5, 16 MiB", [] { return std::unique_ptr<StreamWriter>(new Rar5Writer(16384)); },
     20U << 20U, 16U << 20U, 4000},
};

TEST(RarDecoders, MatchesOfEveryKindComeOutAcrossWindowsEnd) {
  for (const Format& format : kFormats) {
    const auto writer = format.make();
    WriteAtRandom(*writer, format.size, format.reach, format.longest);
    const Bytes packed = writer->Finish();
    for (const bool is_size_known : {true, false}) {
      if (is_size_known) writer->entry.unpacked_size = writer->content.bytes.size();
      const auto decoder = MakeDecompressor(FamilyOf(writer->entry));
      const Unpacked result = Unpack(*decoder, writer->entry, packed, is_size_known ? 77777 : 1009);
      EXPECT_EQ(result.code, 0) << format.name;
      EXPECT_TRUE(result.content == writer->content.bytes) << format.name;
      writer->entry.unpacked_size.reset();
    }
  }
}

TEST(RarDecoders, SolidEntryGoesOnWithWindowTablesAndDistances) {
  for (const Format& format : kFormats) {
    const auto writer = format.make();
    for (const char c : std::string("abcdefgh"))
      writer->Literal(static_cast<std::uint8_t>(c));
    writer->Match(8, 6);
    writer->EndBlock(true);
    const Bytes first = writer->Finish();
    writer->content.bytes.push_back('|');
    const std::size_t boundary = writer->content.bytes.size();
    writer->content.bytes.pop_back();
    writer->RepeatLast();
    writer->Match(20, 6);
    writer->EndBlock(true);
    const Bytes second = writer->Finish();
    const auto decoder = MakeDecompressor(FamilyOf(writer->entry));
    ASSERT_EQ(Unpack(*decoder, writer->entry, first).code, 0) << format.name;
    writer->entry.solid = true;
    const Unpacked result = Unpack(*decoder, writer->entry, second);
    EXPECT_EQ(result.code, 0) << format.name;
    EXPECT_EQ(std::string(result.content.begin(), result.content.end()), "ghabcdabcdef")
        << format.name;
    EXPECT_EQ(boundary, 15U);

    // Without the first entry there is nothing to go on with; nor behind a damaged one.
    EXPECT_EQ(Unpack(*MakeDecompressor(FamilyOf(writer->entry)), writer->entry, second).code, 12);
    writer->entry.solid = false;
    EXPECT_EQ(Unpack(*decoder, writer->entry, second).code, 12) << format.name;
    writer->entry.solid = true;
    EXPECT_EQ(Unpack(*decoder, writer->entry, second).code, 12) << format.name;
  }
}

TEST(RarDecoders, DamagedDataEndsWithItsCode) {
  for (const Format& format : kFormats) {
    const auto writer = format.make();
    WriteAtRandom(*writer, 20000, 20000, format.longest);
    const Bytes packed = writer->Finish();
    writer->entry.unpacked_size = writer->content.bytes.size();
    const auto decoder = MakeDecompressor(FamilyOf(writer->entry));
    for (std::size_t length = 0; length < packed.size(); length += 1 + packed.size() / 200) {
      const Unpacked result = Unpack(*decoder, writer->entry, std::span(packed).first(length));
      const bool is_whole = result.content == writer->content.bytes;
      EXPECT_TRUE(result.code == 12 || is_whole) << format.name << " cut at " << length;
    }
    writer->entry.unpacked_size = writer->content.bytes.size() - 1000;
    EXPECT_EQ(Unpack(*decoder, writer->entry, packed).code, 12) << format.name;

    const auto reaching_back = format.make();
    reaching_back->content.bytes.resize(100);
    reaching_back->Match(50, 6);
    reaching_back->EndBlock(true);
    EXPECT_EQ(Unpack(*decoder, reaching_back->entry, reaching_back->Finish()).code, 12)
        << format.name;
  }
}

TEST(RarDecoders, LargeDictionaryTakesNoMemoryBeforeContentComes) {
  SlidingWindow window;
  window.SetDictionary(std::uint64_t{1} << 30U);
  window.Reserve(1000, std::uint64_t{1} << 30U);
  EXPECT_LE(window.Take().mask, 16U << 20U);

  Entry entry;
  entry.version = 50;
  entry.dictionary_kib = 2U << 20U;
  EXPECT_EQ(Unpack(*MakeDecompressor(FamilyOf(entry)), entry, {}).code, 14);
}

TEST(RarDecoders, Rar5FilterReachesOverWindowAndBlocks) {
  Rar5Writer writer;
  for (int i = 0; i < 10; ++i)
    writer.Literal(7);
  const std::uint32_t length = 600000;  // more than the window holds
  writer.Filter(5, length, 0, 2);
  for (int i = 0; i < 5; ++i)
    writer.Literal(9);
  writer.Literal(0xFF);
  writer.Match(1, 4);
  while (writer.content.bytes.size() < length + 15)
    writer.Match(5, 1000);
  writer.EndBlock(true);
  const auto decoder = MakeDecompressor(DecoderFamily::kRar5);
  const Unpacked result = Unpack(*decoder, writer.entry, writer.Finish());
  ASSERT_EQ(result.code, 0);
  ASSERT_EQ(result.content.size(), writer.content.bytes.size());
  // All differences are -1: both channels count up.
  for (std::size_t i = 0; i < length; ++i) {
    ASSERT_EQ(result.content[15 + i], static_cast<std::uint8_t>(i / 2 + 1)) << i;
  }
  EXPECT_EQ(result.content[14], 9);
  EXPECT_EQ(result.content[15 + length], 0xFF);
}

TEST(RarDecoders, Rar3ProgramThatIsNotKnownEndsWithItsCode) {
  // The block begins 0 bytes ahead and has 15 bytes; the program has 3.
  const auto declare = [](std::uint8_t check) {
    BitWriter bits;
    for (const std::uint32_t number : {0U, 0U, 15U, 3U})
      bits.Put(number, 6);
    for (const std::uint32_t byte : {0U + check, 0x12U, 0x34U})
      bits.Put(byte, 8);
    return bits.bytes();
  };
  const struct {
    Bytes declaration;
    int code;
  } cases[] = {{declare(0x12 ^ 0x34), 14}, {declare(0), 12}, {Bytes{0}, 12}};
  for (const auto& each : cases) {
    Rar3Writer writer;
    writer.Literal('a');
    writer.Declaration(0x80 | 0x20, each.declaration);
    for (int i = 0; i < 20; ++i)
      writer.Literal('b');
    writer.EndBlock(true);
    const auto decoder = MakeDecompressor(DecoderFamily::kRar3);
    EXPECT_EQ(Unpack(*decoder, writer.entry, writer.Finish()).code, each.code);
  }
}

constexpr std::uint8_t kEscape = 77;

struct ModelRun {
  Bytes content;
  std::optional<std::size_t> failed_at;  // bytes of the packed data
};

ModelRun RunModel(const Bytes& packed, std::uint32_t order) {
  MemorySource source(packed, packed.size());
  BitReader reader;
  reader.Begin(source);
  RangeDecoder range;
  PpmdModel model;
  ModelRun run;
  try {
    range.Begin(reader);
    model.Start(order, 1U << 20U);
    while (reader.Position() / 8 + 6 < packed.size()) {
      run.content.push_back(model.Decode(range));
      if (run.content.back() == kEscape) throw Failure{companion::kRarBadData};
    }
  } catch (const Failure&) {
    run.failed_at = static_cast<std::size_t>(reader.Position() / 8);
  }
  return run;
}

// Nearly every bit pattern stands for some text. Where one does not, or holds the escape, its bytes
// are changed. The sums are those of an independent decoder; the model runs out of memory once.
TEST(RarDecoders, ModelAgreesWithAnIndependentDecoder) {
  const struct {
    std::uint32_t order;
    std::size_t packed_length;
    std::size_t length;
    std::uint32_t crc;
  } cases[] = {{4, 4000, 9262, 1271526284}, {64, 10000, 30201, 4073077575}};
  for (const auto& each : cases) {
    Random random(each.order);
    Bytes packed(each.packed_length);
    for (std::uint8_t& byte : packed)
      byte = static_cast<std::uint8_t>(random());
    ModelRun run = RunModel(packed, each.order);
    for (int tries = 0; run.failed_at && tries < 100; ++tries) {
      const std::size_t from = *run.failed_at > 4 ? *run.failed_at - 4 : 0;
      for (std::size_t i = from; i < *run.failed_at + 2; ++i) {
        packed[i] = static_cast<std::uint8_t>(random());
      }
      run = RunModel(packed, each.order);
    }
    ASSERT_FALSE(run.failed_at);
    EXPECT_EQ(run.content.size(), each.length);
    EXPECT_EQ(crc32_z(0, run.content.data(), run.content.size()), each.crc);

    // The same as an entry: a new model with its order, 1 MiB and the escape; then the end.
    Entry entry;
    entry.version = 29;
    entry.unpacked_size = run.content.size();
    const std::uint32_t order = each.order <= 16 ? each.order - 1 : 15 + (each.order - 16) / 3;
    Bytes block = {static_cast<std::uint8_t>(0xE0 | order), 0, kEscape};
    block.insert(block.end(), packed.begin(), packed.end());
    EXPECT_TRUE(Unpack(*MakeDecompressor(DecoderFamily::kRar3), entry, block).content ==
                run.content);
  }
}

}  // namespace
}  // namespace tests
