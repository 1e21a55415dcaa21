#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>

#include "companion/rar/blake2sp.h"
#include "companion/rar/filters.h"
#include "companion/rar/ppmd_model.h"
#include "companion/rar/sliding_window.h"
#include "tests/companion/packed_streams.h"

namespace tests {
namespace {

using namespace companion::rar;

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
    const std::uint32_t bits = 1 + random() % HighestBit(known);
    std::uint32_t distance = 1 + random() % (1U << bits);
    if (random() % 50 == 0) distance = known;
    const std::uint32_t lengths = random() % 4 == 0 ? longest - 5 : 20;
    const std::uint32_t length = 6 + random() % lengths;
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

    // A solid entry cannot be decoded without the first one, nor after a damaged one.
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

// A program as the recognition sees it: of that length and CRC32, its first byte the exclusive or
// of the others. The CRC comes about through the last four bytes.
Bytes MakeProgram(std::size_t length, std::uint32_t crc) {
  const std::uint32_t* const table = get_crc_table();
  std::uint32_t wanted = ~crc;
  for (int i = 0; i < 4; ++i) {
    std::uint32_t at = 0;
    while (table[at] >> 24U != wanted >> 24U)
      ++at;
    wanted = (wanted ^ table[at]) << 8U | at;
  }
  for (std::uint32_t attempt = 0;; ++attempt) {
    Bytes program(length);
    program[0] = static_cast<std::uint8_t>(attempt);
    program[1] = static_cast<std::uint8_t>(attempt >> 8U);
    const std::uint32_t last =
        wanted ^ ~static_cast<std::uint32_t>(crc32_z(0, program.data(), length - 4));
    for (unsigned i = 0; i < 4; ++i)
      program[length - 4 + i] = static_cast<std::uint8_t>(last >> (8 * i));
    std::uint8_t check = 0;
    for (const std::uint8_t byte : program)
      check ^= byte;
    if (check == 0) return program;
  }
}

// Declarations of filters, with numbers in each of their forms.
class Declaration : public BitWriter {
 public:
  void Number(std::uint32_t value) {
    const unsigned form = value < 16 ? 0 : value < 256 ? 1 : value < 65536 ? 2 : 3;
    Put(form, 2);
    Put(value, 4U << form);
  }
  void Raw(const Bytes& data) {
    Number(static_cast<std::uint32_t>(data.size()));
    for (const std::uint8_t byte : data)
      Put(byte, 8);
  }
};

// Declares a program for a block that begins `ahead` bytes later.
Bytes Declare(const Bytes& program, std::uint32_t ahead, std::uint32_t length,
              const std::vector<std::uint32_t>& registers) {
  Declaration bits;
  bits.Number(0);  // the first program
  bits.Number(ahead);
  bits.Number(length);
  bits.Put((1U << registers.size()) - 1, 7);
  for (const std::uint32_t value : registers)
    bits.Number(value);
  bits.Raw(program);
  return bits.bytes();
}

FilterRequest Asked(FilterKind kind, std::uint32_t first, std::uint32_t second) {
  FilterRequest request;
  request.kind = kind;
  request.channels = first;
  request.stride = first;
  request.red_offset = second;
  return request;
}

constexpr std::uint8_t kNamesProgram = 0x80, kStartsLater = 0x40, kHasLength = 0x20,
                       kHasRegisters = 0x10, kHasData = 0x08;

TEST(RarDecoders, Rar3ProgramsOfTheOriginalPackerAreKnown) {
  const struct {
    std::size_t length;
    std::uint32_t crc;
    FilterKind kind;
    std::vector<std::uint32_t> registers;
  } cases[] = {
      {29, 0x0E06077D, FilterKind::kDelta, {3}},    {53, 0xAD576887, FilterKind::kX86Call, {}},
      {57, 0x3CD7E57E, FilterKind::kX86Jump, {}},   {120, 0x3769893F, FilterKind::kItanium, {}},
      {149, 0x1C2C5DC8, FilterKind::kRgb, {30, 1}}, {216, 0xBC85E701, FilterKind::kAudio, {2}}};
  constexpr std::uint32_t kLength = 70000, kAhead = 20;
  Random random(1);
  Bytes content(2 * kLength + kAhead + 600);
  for (std::uint8_t& byte : content) {
    const std::uint32_t choices[] = {0xE8 + random() % 2, random() % 256, random() % 3, 0};
    byte = static_cast<std::uint8_t>(choices[random() % 4]);
  }
  for (const auto& each : cases) {
    Rar3Writer writer;
    writer.Declaration(
        kNamesProgram | kHasLength | kHasRegisters,
        Declare(MakeProgram(each.length, each.crc), kAhead, kLength, each.registers));
    // The program once more, by its number, for as many bytes; data of its own is passed over.
    Declaration again;
    again.Number(1);
    again.Number(kAhead + kLength + 5 - 258);
    again.Put(each.registers.empty() ? 0 : 3, 7);
    for (std::size_t i = 0; !each.registers.empty() && i < 2; ++i)
      again.Number(i < each.registers.size() ? each.registers[i] : 0);
    again.Raw(Bytes(100, 1));
    writer.Declaration(kNamesProgram | kStartsLater | kHasRegisters | kHasData, again.bytes());
    for (const std::uint8_t byte : content)
      writer.Literal(byte);
    writer.EndBlock(true);
    Bytes expected = content;
    for (const std::uint32_t at : {kAhead, kAhead + kLength + 5}) {
      const auto begin = expected.begin() + at;
      Bytes block(begin, begin + kLength);
      Bytes scratch;
      const auto& registers = each.registers;
      UndoFilter(Asked(each.kind, registers.empty() ? 0 : registers[0],
                       registers.size() < 2 ? 0 : registers[1]),
                 at, block, scratch);
      std::copy(block.begin(), block.end(), begin);
    }
    const Unpacked result =
        Unpack(*MakeDecompressor(DecoderFamily::kRar3), writer.entry, writer.Finish());
    EXPECT_EQ(result.code, 0) << each.length;
    EXPECT_TRUE(result.content == expected && expected != content) << each.length;
  }
}

TEST(RarDecoders, Rar3ProgramThatIsNotKnownEndsWithItsCode) {
  const Bytes delta = MakeProgram(29, 0x0E06077D);
  Bytes damaged = delta;
  damaged[7] ^= 1;
  const auto declare = [](const Bytes& program) { return Declare(program, 0, 15, {}); };
  const struct {
    Bytes declaration;
    int code;
  } cases[] = {{declare({0x12 ^ 0x34, 0x12, 0x34}), 14},
               {declare({0, 0x12, 0x34}), 12},
               {declare(damaged), 12},
               {declare(MakeProgram(29, 0x0E06077C)), 14},
               {declare(MakeProgram(30, 0x0E06077D)), 14},
               {Declare(delta, 0, 0x1E001, {3}), 12},  // more than the machine's memory
               {Declare(delta, 0, 15, {0}), 12},       // no channels
               {Declare(delta, 0, 15, {3, 0, 0, 0, 14}), 12},
               {declare({}), 12},
               {Bytes{0}, 12}};
  for (const auto& each : cases) {
    Rar3Writer writer;
    writer.Literal('a');
    writer.Declaration(kNamesProgram | kHasLength | kHasRegisters, each.declaration);
    for (int i = 0; i < 20; ++i)
      writer.Literal('b');
    writer.EndBlock(true);
    const auto decoder = MakeDecompressor(DecoderFamily::kRar3);
    EXPECT_EQ(Unpack(*decoder, writer.entry, writer.Finish()).code, each.code);
  }
}

// The sums of the bytes 0, 1, 2, ...: up to 255 of them as published with the algorithm, of more
// bytes those of an independent implementation.
TEST(RarDecoders, Blake2spAgreesWithItsPublishedVectors) {
  const struct {
    std::size_t length;
    const char* digest;
  } cases[] = {{0, "dd0e891776933f43c7d032b08a917e25741f8aa9a12c12e1cac8801500f2ca4f"},
               {1, "a6b9eecc25227ad788c99d3f236debc8da408849e9a5178978727a81457f7239"},
               {64, "52603b6cbfad4966cb044cb267568385cf35f21e6c45cf30aed19832cb51e9f5"},
               {255, "25059f10605e67adfe681350666e15ae976a5a571c13cf5bc8053f430e120a52"},
               {1000, "7e2830f74fc7c4d224a201b46f95e37ebbfb56dddc492f8227e4d905201734b8"},
               {5000, "d7ad4ed26ce85b35d95db276deacd48df0e532fdf2683622a4a97999aa97e5c2"}};
  for (const auto& each : cases) {
    Bytes message(each.length);
    std::iota(message.begin(), message.end(), std::uint8_t{0});
    for (const std::size_t piece : {std::size_t{7}, std::size_t{5000}}) {
      Blake2sp sum;
      for (std::size_t at = 0; at < message.size(); at += piece)
        sum.Update(&message[at], std::min(piece, message.size() - at));
      std::string digest;
      for (const std::uint8_t byte : sum.Finish())
        digest += {"0123456789abcdef"[byte / 16], "0123456789abcdef"[byte % 16]};
      EXPECT_EQ(digest, each.digest) << each.length;
    }
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
      if (run.content.back() == kEscape) throw Failure{ports::kRarBadData};
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
