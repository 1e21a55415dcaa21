#include <gtest/gtest.h>

#include "companion/rar/filter_pipeline.h"
#include "companion/rar/filters.h"
#include "tests/companion/packed_bits.h"

namespace tests {
namespace {

using namespace companion::rar;

Bytes Undo(const FilterRequest& request, std::uint64_t position, Bytes block) {
  Bytes scratch;
  UndoFilter(request, position, block, scratch);
  return block;
}

FilterRequest Asked(FilterKind kind, std::uint32_t channels = 0) {
  FilterRequest request;
  request.kind = kind;
  request.channels = channels;
  return request;
}

TEST(RarFilters, X86TargetsBecomeRelative) {
  constexpr auto kCall = FilterKind::kX86Call;
  constexpr std::uint8_t kFF = 0xFF;
  const struct {
    FilterKind kind;
    std::uint64_t position;
    bool wraps;
    Bytes block;
    Bytes expected;
  } cases[] = {
      // 0x1000 after an operand at 0x101.
      {kCall, 0x100, false, {0xE8, 0, 0x10, 0, 0, 0x90}, {0xE8, kFF, 0x0E, 0, 0, 0x90}},
      {kCall, 0x100, false, {0xE9, 0, 0x10, 0, 0}, {0xE9, 0, 0x10, 0, 0}},
      {FilterKind::kX86Jump, 0x100, false, {0xE9, 0, 0x10, 0, 0}, {0xE9, kFF, 0x0E, 0, 0}},
      // Negative, and still within the file: moved by the file's assumed size.
      {kCall, 0x100, false, {0xE8, kFF, kFF, kFF, kFF}, {0xE8, kFF, kFF, kFF, 0}},
      // Neither: left as it is.
      {kCall, 0, false, {0xE8, 0, 0, 0, 0x80}, {0xE8, 0, 0, 0, 0x80}},
      {kCall, 0, false, {0xE8, 0, 0, 0, 1}, {0xE8, 0, 0, 0, 1}},
      // Beyond 16 MiB the two formats count differently.
      {kCall, 0x1000000, true, {0xE8, 5, 0, 0, 0}, {0xE8, 4, 0, 0, 0}},
      {kCall, 0x1000000, false, {0xE8, 5, 0, 0, 0}, {0xE8, 4, 0, 0, kFF}},
      // What an operand holds is no opcode.
      {kCall, 0, false, {0xE8, 0x10, 0xE8, 0, 0, 5, 0, 0}, {0xE8, 0x0F, 0xE8, 0, 0, 5, 0, 0}},
      // With one byte missing there is no operand.
      {kCall, 0x100, false, {0xE8, 0, 0x10, 0}, {0xE8, 0, 0x10, 0}},
  };
  for (const auto& each : cases) {
    FilterRequest request = Asked(each.kind);
    request.position_wraps = each.wraps;
    EXPECT_EQ(Undo(request, each.position, each.block), each.expected);
  }
}

TEST(RarFilters, ArmBranchesBecomeRelative) {
  EXPECT_EQ(
      Undo(Asked(FilterKind::kArm), 0x40, {1, 2, 3, 0xEA, 0x20, 0, 0, 0xEB, 5, 0, 0, 0xEB, 0xEB}),
      (Bytes{1, 2, 3, 0xEA, 0x0F, 0, 0, 0xEB, 0xF3, 0xFF, 0xFF, 0xEB, 0xEB}));
}

TEST(RarFilters, ItaniumBranchesBecomeRelative) {
  // Template 0x10 has a branch in its last slot: bits 87 to 127, opcode 5 on top, target at bit
  // 100.
  Bytes block(32);
  block[0] = 0x10;
  block[12] = 0x50;  // the target's lowest four bits: 5
  block[13] = 0x01;
  block[15] = 0x50;
  Bytes expected = block;
  expected[12] = 0x20;  // bundle 3
  EXPECT_EQ(Undo(Asked(FilterKind::kItanium), 0x30, block), expected);
  block[0] = 0x0E;  // no branches
  EXPECT_EQ(Undo(Asked(FilterKind::kItanium), 0x30, block), block);
}

class Collected final : public ContentSink {
 public:
  void Write(const std::uint8_t* data, std::size_t length) override {
    bytes.insert(bytes.end(), data, data + length);
  }
  Bytes bytes;
};

TEST(RarFilters, FiltersOfOneBlockRunInOrderWhereverPiecesEnd) {
  Bytes input(100);
  for (std::size_t i = 0; i < input.size(); ++i)
    input[i] = static_cast<std::uint8_t>(i * 37);
  Bytes expected = input;
  Bytes block(expected.begin() + 20, expected.begin() + 70);
  block = Undo(Asked(FilterKind::kArm), 20, Undo(Asked(FilterKind::kDelta, 3), 20, block));
  std::copy(block.begin(), block.end(), expected.begin() + 20);
  FilterPipeline pipeline;
  for (std::size_t piece = 1; piece <= input.size(); piece += 7) {
    Collected sink;
    pipeline.Begin(sink);
    pipeline.Announce(20, 50, Asked(FilterKind::kDelta, 3));
    pipeline.Announce(20, 50, Asked(FilterKind::kArm));
    for (std::size_t at = 0; at < input.size(); at += piece) {
      pipeline.Write(std::span(input).subspan(at, std::min(piece, input.size() - at)));
    }
    EXPECT_EQ(sink.bytes, expected) << piece;
    // A block that its entry does not complete leaves nothing to the next entry.
    pipeline.Announce(100, 10, Asked(FilterKind::kArm));
    pipeline.Announce(110, 10, Asked(FilterKind::kArm));
    pipeline.Write(Bytes(5));
    if (piece % 2 == 0) continue;
    pipeline.ForgetAnnounced();
    EXPECT_EQ(sink.bytes.size(), expected.size() + 5);
  }
}

TEST(RarFilters, BlocksThatNoArchiveHoldsAreRefused) {
  Collected sink;
  FilterPipeline pipeline;
  pipeline.Begin(sink);
  pipeline.Write(Bytes(30));
  const FilterRequest request = Asked(FilterKind::kArm);
  EXPECT_THROW(pipeline.Announce(29, 10, request), Failure);
  EXPECT_THROW(pipeline.Announce(30, (4U << 20U) + 1, request), Failure);
  pipeline.Announce(30, 4U << 20U, request);
  pipeline.ForgetAnnounced();
  pipeline.Announce(40, 10, request);
  EXPECT_THROW(pipeline.Announce(45, 10, request), Failure);
  EXPECT_THROW(
      {
        for (int i = 0; i < 1000; ++i)
          pipeline.Announce(40, 10, request);
      },
      Failure);
}

}  // namespace
}  // namespace tests
