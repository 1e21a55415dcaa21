#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <optional>
#include <string>

#include "companion/rar/ppmd_model.h"
#include "tests/companion/packed_streams.h"

namespace tests {
namespace {

using namespace companion::rar;

// A program as the recognition sees it: zeros, except for the first two bytes and the last four,
// which give it the length and the CRC32 of a known one, and an exclusive or of all bytes of 0.
Bytes MakeProgram(std::size_t length, std::uint32_t first, std::uint32_t last) {
  Bytes program(length);
  program[0] = static_cast<std::uint8_t>(first);
  program[1] = static_cast<std::uint8_t>(first >> 8U);
  for (unsigned i = 0; i < 4; ++i)
    program[length - 4 + i] = static_cast<std::uint8_t>(last >> (8 * i));
  return program;
}
const Bytes kDelta = MakeProgram(29, 0x6E, 0x934BB006);
const Bytes kCalls = MakeProgram(53, 0x23D, 0x83323AB4);
const Bytes kRgb = MakeProgram(149, 0xE9, 0x092DF33E);
const Bytes kAudio = MakeProgram(216, 0x25, 0x23E33ADF);

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

// Declares a program for a block that begins `ahead` bytes later. Number 0 forgets all others.
Bytes Declare(std::optional<std::uint32_t> number, const Bytes& program, std::uint32_t ahead,
              std::uint32_t length, const std::vector<std::uint32_t>& registers) {
  Declaration bits;
  if (number) bits.Number(*number);
  bits.Number(ahead);
  bits.Number(length);
  bits.Put((1U << registers.size()) - 1, 7);
  for (const std::uint32_t value : registers)
    bits.Number(value);
  bits.Raw(program);
  return bits.bytes();
}

constexpr std::uint8_t kNamesProgram = 0x80, kStartsLater = 0x40, kHasLength = 0x20,
                       kHasRegisters = 0x10, kHasData = 0x08;

// The sums are those of an independent decoder, except for Itanium, which it does not know.
TEST(Rar3Programs, ProgramsOfTheOriginalPackerAreKnown) {
  const struct {
    Bytes program;
    std::vector<std::uint32_t> registers;
    std::uint32_t sum;
  } cases[] = {{kDelta, {3}, 2999527328},
               {kCalls, {}, 306935365},
               {MakeProgram(57, 0xB6, 0x04BEA0AC), {}, 1584895245},
               {MakeProgram(120, 0x62, 0x101A7D15), {}, 2829287081},
               {kRgb, {30, 1}, 392785866},
               {kAudio, {2}, 3865046625}};
  constexpr std::uint32_t kLength = 0x1E000, kAhead = 20;  // the most for some

  Random random(1);
  Bytes content(2 * kLength + kAhead + 600);
  for (std::uint8_t& byte : content) {
    const std::uint32_t choices[] = {0xE8 + random() % 2, random() % 256, random() % 3, 0};
    byte = static_cast<std::uint8_t>(choices[random() % 4]);
  }
  const auto decoder = MakeDecompressor(DecoderFamily::kRar3);
  for (const auto& each : cases) {
    Rar3Writer writer;
    // The first program of an entry, which is forgotten at once with its block.
    writer.Declaration(kHasLength | kHasRegisters, Declare({}, kDelta, 3, 50, {1}));
    writer.Declaration(kNamesProgram | kHasLength | kHasRegisters,
                       Declare(0, each.program, kAhead, kLength, each.registers));
    // The program once more, by its number, for as many bytes; data of its own is passed over.
    Declaration again;
    again.Number(1);
    again.Number(kAhead + kLength + 5 - 258);
    again.Put(each.registers.empty() ? 0 : 3, 7);
    for (std::size_t i = 0; !each.registers.empty() && i < 2; ++i)
      again.Number(i < each.registers.size() ? each.registers[i] : 0);
    again.Raw(Bytes(300, 1));
    writer.Declaration(kNamesProgram | kStartsLater | kHasRegisters | kHasData, again.bytes());
    constexpr std::uint32_t kRest = kAhead + 2 * kLength + 9;
    writer.Declaration(kNamesProgram | kHasLength | kHasRegisters,
                       Declare(2, kDelta, kRest, 100, {2}));
    for (const std::uint8_t byte : content)
      writer.Literal(byte);
    writer.EndBlock(true);
    const Unpacked result = Unpack(*decoder, writer.entry, writer.Finish());
    EXPECT_EQ(result.code, 0) << each.program.size();
    EXPECT_EQ(crc32_z(0, result.content.data(), result.content.size()), each.sum)
        << each.program.size();
  }
}

TEST(Rar3Programs, ProgramThatIsNotKnownEndsWithItsCode) {
  Bytes damaged = kDelta;
  damaged[7] ^= 1;
  const auto declare = [](const Bytes& program) { return Declare(0, program, 0, 15, {}); };
  const struct {
    Bytes declaration;
    int code;
  } cases[] = {{declare({0x12 ^ 0x34, 0x12, 0x34}), 14},
               {declare({0, 0x12, 0x34}), 12},
               {declare(damaged), 12},
               {declare(Bytes(29)), 14},
               {Declare(0, kDelta, 0, 0x1E001, {3}), 12},  // more than the machine's memory
               {Declare(0, kDelta, 0, 15, {0}), 12},       // no channels
               {Declare(0, kAudio, 0, 15, {0}), 12},
               {Declare(0, kRgb, 0, 15, {3}), 12},      // too short a line
               {Declare(0, kRgb, 0, 15, {15, 3}), 12},  // no such colour
               {Declare(0, kDelta, 0, 15, {3, 0, 0, 0, 14}), 12},
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

constexpr std::uint8_t kEscape = 77;

// What the model makes of packed bytes, as far as it is no command.
Bytes RunModel(const Bytes& packed, std::uint32_t order) {
  MemorySource source(packed, packed.size());
  BitReader reader;
  reader.Begin(source);
  RangeDecoder range;
  range.Begin(reader);
  PpmdModel model;
  model.Start(order, 1U << 20U);
  Bytes content;
  while (reader.Position() / 8 + 6 < packed.size()) {
    content.push_back(model.Decode(range));
    // The escape itself stands for any number that is no command.
    if (content.back() == kEscape) model.Decode(range);
  }
  return content;
}

// Commands stand after the escape, the letter M here. The model's bytes were encoded by hand.
TEST(Rar3Model, ModelObeysItsCommandsBetweenOtherBlocks) {
  Rar3Writer writer;
  writer.Declaration(kHasLength | kHasRegisters, Declare({}, kCalls, 0, 0, {}));
  for (std::uint8_t digit = '0'; digit <= '9'; ++digit)
    writer.Literal(digit);
  while (writer.content.bytes.size() < 70000)
    writer.Match(10, 250);
  writer.EndBlock(false);
  Bytes packed = writer.Finish();
  const std::size_t model_begins = packed.size();
  const Bytes model = {0xE1, 0,    'M',  // a new model
                       0x61, 0x03, 0x6D, 0xD5, 0xA1, 0xDC, 0x47, 0x91, 0x7F, 0x19, 0x4C, 0x76, 0xFD,
                       0x8F, 0xA8, 0xBB, 0x23, 0xB1, 0x7B, 0xA1, 0x65, 0xA0, 0x4E, 0x03, 0x51, 0x72,
                       0xF9, 0x19, 0x75, 0xC7, 0x9B,
                       0x80,  // the same model, in a new block
                       0xC2, 0xC2, 0x80, 0x87, 0x4E, 0xBF, 0x92, 0x03, 0x24, 0xC6, 0x1E, 0xB2, 0x6A,
                       0x19, 0x24, 0x05, 0x68, 0x44, 0x61, 0x2C, 0x63, 0xD5, 0xB5, 0xF4, 0xC5, 0x4B,
                       0x9A, 0x6E, 0x0C, 0xFF, 0xE7, 0xE3, 0xEE, 0x28, 0x8D, 0x67, 0xD3, 0xAF, 0xA6,
                       0x90, 0x27, 0x9B, 0x23, 0x37, 0xDD, 0xFD, 0xC3, 0x69, 0xF1, 0x5A, 0xEF, 0xFF,
                       0xAA, 0x0F, 0x58, 0x75, 0x18, 0x76, 0xA3, 0x69, 0x9E};
  packed.insert(packed.end(), model.begin(), model.end());
  Content& content = writer.content;
  const auto add = [&](const std::string& text) {
    content.bytes.insert(content.bytes.end(), text.begin(), text.end());
  };
  add("abc");
  content.Copy(0x010203 + 2, 5 + 32);
  content.Copy(1, 2 + 4);
  add("M");
  add("xyzxyzxyzxyz");  // behind a filter that changes calls only
  // Frequencies that differ so much that some are forgotten.
  Random random(2);
  for (int i = 0; i < 600; ++i) {
    const std::uint32_t choice = random() % 100;
    add(choice < 90 ? "a" : choice < 96 ? "b" : choice < 99 ? "c" : "d");
  }
  const Bytes expected = content.bytes;

  const auto decoder = MakeDecompressor(DecoderFamily::kRar3);
  for (const bool is_size_known : {true, false}) {
    writer.entry.solid = false;
    writer.entry.unpacked_size.reset();
    if (is_size_known) writer.entry.unpacked_size = expected.size();
    for (std::size_t length = model_begins; length < packed.size() - 10; ++length) {
      const Unpacked cut = Unpack(*decoder, writer.entry, std::span(packed).first(length));
      EXPECT_TRUE(cut.code == 12 || cut.content != expected) << length;
    }
    const Unpacked result = Unpack(*decoder, writer.entry, packed);
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(result.content == expected);
  }
  // A solid entry goes on with other blocks.
  writer.Match(20, 30);
  writer.EndBlock(true);
  writer.entry.solid = true;
  writer.entry.unpacked_size.reset();
  EXPECT_EQ(Unpack(*decoder, writer.entry, writer.Finish()).content,
            Bytes(content.bytes.end() - 30, content.bytes.end()));
  for (const Bytes& damaged : {Bytes{0x80, 0, 0, 0, 0, 0}, Bytes{0xE0, 0, 'M', 0, 0, 0, 0, 0}}) {
    writer.entry.solid = false;
    writer.entry.unpacked_size = 1;
    EXPECT_EQ(Unpack(*decoder, writer.entry, damaged).code, 12);
  }
}

// Nearly every bit pattern stands for some text. Where one does not, or holds a command, its bytes
// are changed. The sum is that of an independent decoder; the model runs out of memory.
TEST(Rar3Model, ModelAgreesWithAnIndependentDecoder) {
  Random random(64);
  Bytes packed(20000);
  for (std::uint8_t& byte : packed)
    byte = static_cast<std::uint8_t>(random());
  for (const std::size_t place : std::initializer_list<std::size_t>{
           715,   785,   2823,  3131,  3551,  3550,  3605,  4547,  4885,  4920,
           4920,  5333,  5564,  5568,  6995,  7311,  8841,  10583, 10792, 11911,
           13030, 13285, 13363, 13713, 15212, 15435, 16396, 16574, 18801, 19877}) {
    for (std::size_t i = place - 4; i < place + 2; ++i)
      packed[i] = static_cast<std::uint8_t>(random());
  }
  const Bytes content = RunModel(packed, 64);
  EXPECT_EQ(content.size(), 57649U);
  EXPECT_EQ(crc32_z(0, content.data(), content.size()), 3035979318);

  // The same as an entry: a new model with its order, 1 MiB and the escape; then the end.
  Entry entry;
  entry.version = 29;
  entry.unpacked_size = content.size();
  packed.insert(packed.begin(), {0xFF, 0, kEscape});
  EXPECT_TRUE(Unpack(*MakeDecompressor(DecoderFamily::kRar3), entry, packed).content == content);
}

}  // namespace
}  // namespace tests
