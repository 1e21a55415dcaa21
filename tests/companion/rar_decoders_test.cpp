#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>

#include "companion/rar/blake2sp.h"
#include "companion/rar/sliding_window.h"
#include "tests/companion/packed_streams.h"

namespace tests {
namespace {

using namespace companion::rar;

// Matches of every reach and length, across the window's end, in many blocks.
void WriteAtRandom(StreamWriter& writer, std::size_t size, std::uint32_t reach,
                   std::uint32_t longest) {
  Random random(5);
  auto* const rar3 = dynamic_cast<Rar3Writer*>(&writer);
  writer.RepeatLast();  // nothing yet
  for (int i = 0; i < 600; ++i)
    writer.Literal(static_cast<std::uint8_t>(random()));
  for (std::size_t next_block = size / 300; writer.content.bytes.size() < size;) {
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
      next_block += size / 300;
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
    const auto decoder = MakeDecompressor(FamilyOf(writer->entry));
    // After a small entry the window has to grow, before it is full and loses the beginning.
    for (const std::size_t size : {std::size_t{300}, std::size_t{300000}}) {
      const auto other = format.make();
      for (unsigned i = 0; i < 300; ++i)
        other->Literal(static_cast<std::uint8_t>(i * 7));
      while (other->content.bytes.size() < size)
        other->Match(300, 200);
      if (size > 300 && format.reach > size)
        other->Match(static_cast<std::uint32_t>(other->content.bytes.size()) - 8, 100);
      // So much that the window fills at one go, with codes whose lengths never repeat.
      for (std::size_t block = 0; block < size / 300; ++block) {
        other->EndBlock(false);
        for (unsigned i = 0; i < 256; ++i)
          other->Literal(static_cast<std::uint8_t>(i < 192 ? i : (i - 192) * 3));
      }
      other->EndBlock(true);
      other->entry.unpacked_size = other->content.bytes.size();
      EXPECT_TRUE(Unpack(*decoder, other->entry, other->Finish()).content == other->content.bytes);
    }
    for (const bool is_size_known : {true, false}) {
      if (is_size_known) writer->entry.unpacked_size = writer->content.bytes.size();
      const Unpacked result = Unpack(*decoder, writer->entry, packed, is_size_known ? 77777 : 1009);
      EXPECT_EQ(result.code, 0) << format.name;
      EXPECT_TRUE(result.content == writer->content.bytes) << format.name;
      writer->entry.unpacked_size.reset();
    }
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
    // Nothing goes on after a damaged entry, or without a first one.
    writer->entry.solid = true;
    writer->entry.unpacked_size.reset();
    EXPECT_EQ(Unpack(*decoder, writer->entry, packed).code, 12) << format.name;
    EXPECT_EQ(Unpack(*MakeDecompressor(FamilyOf(writer->entry)), writer->entry, packed).code, 12);

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
  SlidingWindow::Cursor cursor = window.Take();
  EXPECT_LE(cursor.mask, 16U << 20U);
  // A copy goes on at the beginning, even with a single byte.
  cursor.position = cursor.mask - 2;
  cursor.Put('a'), cursor.Put('b');
  EXPECT_TRUE(cursor.Copy(2, 2));
  EXPECT_EQ(cursor.data[0], 'b');
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

// The sums of the bytes 0, 1, 2, ...: up to 255 of them as published with the algorithm, of more
// bytes those of an independent implementation.
TEST(RarDecoders, Blake2spAgreesWithItsPublishedVectors) {
  const struct {
    std::size_t length;
    const char* digest;
  } cases[] = {{0, "dd0e891776933f43c7d032b08a917e25741f8aa9a12c12e1cac8801500f2ca4f"},
               {64, "52603b6cbfad4966cb044cb267568385cf35f21e6c45cf30aed19832cb51e9f5"},
               {255, "25059f10605e67adfe681350666e15ae976a5a571c13cf5bc8053f430e120a52"},
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

}  // namespace
}  // namespace tests
