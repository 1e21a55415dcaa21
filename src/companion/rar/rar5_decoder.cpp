#include "companion/rar/rar5_decoder.h"

#include <algorithm>

#include "companion/rar/code_lengths.h"
#include "companion/rar/failure.h"
#include "companion/rar/limits.h"

namespace companion::rar {
namespace {

constexpr std::size_t kLiteralCodes = 306;
constexpr std::size_t kDistanceCodes = 64;
constexpr std::size_t kLowDistanceCodes = 16;
constexpr std::size_t kRepeatCodes = 44;

constexpr std::uint32_t kRepeatLastSymbol = 257;
constexpr std::uint32_t kFirstDistanceSymbol = 258;
constexpr std::uint32_t kFirstLengthSymbol = 262;

constexpr std::size_t kFlushSize = 128U << 10U;
// No symbol takes more bits, its extra bits included.
constexpr std::ptrdiff_t kSymbolBits = 96;

std::uint32_t TakeLength(std::uint32_t slot, BitCursor& in) {
  if (slot < 8) return 2 + slot;
  const unsigned bits = slot / 4 - 1;
  return 2 + ((4 + slot % 4) << bits) + in.Take(bits);
}

}  // namespace

void Rar5Decoder::Decode(const Entry& entry, PackedSource& source, ContentSink& sink) {
  if (entry.dictionary_kib > kMaxDictionaryKib) throw Failure{ports::kRarUnknownFormat};
  if (entry.solid && !can_go_on_) throw Failure{ports::kRarBadData};
  if (!entry.solid) ResetState();
  can_go_on_ = false;
  window_.SetDictionary(std::uint64_t{entry.dictionary_kib} << 10U);
  reader_.Begin(source);
  pipeline_.Begin(sink);
  entry_start_ = window_.Position();
  flushed_ = entry_start_;
  expected_ = entry.unpacked_size.value_or(0);
  bool more = true;
  while (more) {
    const Block block = ReadBlockHeader();
    if (block.has_tables) ReadTables();
    if (!has_tables_) throw Failure{ports::kRarBadData};
    DecodeBlock(block);
    more = !block.is_last;
  }
  Flush();
  can_go_on_ = true;
}

void Rar5Decoder::ResetState() {
  window_.Reset();
  last_distances_.fill(0);
  last_length_ = 0;
  has_tables_ = false;
}

Rar5Decoder::Block Rar5Decoder::ReadBlockHeader() {
  const std::uint32_t flags = reader_.Take(8);
  const std::uint32_t check = reader_.Take(8);
  const unsigned length_bytes = ((flags >> 3U) & 3U) + 1;
  if (length_bytes > 3) throw Failure{ports::kRarBadData};
  std::uint32_t length = 0;
  std::uint32_t sum = 0x5AU ^ flags;
  for (unsigned i = 0; i < length_bytes; ++i) {
    const std::uint32_t byte = reader_.Take(8);
    length |= byte << (8 * i);
    sum ^= byte;
  }
  if (sum != check) throw Failure{ports::kRarBadData};
  Block block;
  block.next = reader_.Position() + std::uint64_t{length} * 8;
  block.end = length == 0 ? block.next : block.next - 8 + (flags & 7U) + 1;
  block.is_last = (flags & 0x40U) != 0;
  block.has_tables = (flags & 0x80U) != 0;
  return block;
}

void Rar5Decoder::ReadTables() {
  std::array<std::uint8_t, kLiteralCodes + kDistanceCodes + kLowDistanceCodes + kRepeatCodes>
      lengths{};
  ReadCodeLengths(reader_, false, lengths);
  const std::span<const std::uint8_t> all(lengths);
  literals_.Build(all.first(kLiteralCodes));
  distances_.Build(all.subspan(kLiteralCodes, kDistanceCodes));
  low_distances_.Build(all.subspan(kLiteralCodes + kDistanceCodes, kLowDistanceCodes));
  repeat_lengths_.Build(all.last(kRepeatCodes));
  has_tables_ = true;
}

// The last symbol may extend beyond the block's end; the stream continues at the next block.
void Rar5Decoder::DecodeBlock(const Block& block) {
  while (reader_.Position() < block.end) {
    if (window_.Position() - flushed_ >= kFlushSize) Flush();
    const std::uint64_t done = window_.Position() - entry_start_;
    window_.Reserve(kFlushSize + SlidingWindow::kMaxMatch, expected_ > done ? expected_ - done : 0);
    const std::ptrdiff_t buffered = reader_.UncheckedBits();
    const auto in_block = static_cast<std::ptrdiff_t>(block.end - reader_.Position());
    if (DecodeSymbols(flushed_ + kFlushSize, std::min(buffered, in_block))) ReadFilter();
  }
  reader_.MoveTo(block.next);
}

// Decodes as many symbols as the next `bits` certainly contain, but at least one. Returns true if a
// filter follows.
bool Rar5Decoder::DecodeSymbols(std::uint64_t until, std::ptrdiff_t bits) {
  BitCursor in = reader_.Cursor();
  SlidingWindow::Cursor window = window_.Take();
  bool is_filter = false;
  bool is_sound = true;
  for (std::ptrdiff_t left = std::max<std::ptrdiff_t>(bits / kSymbolBits, 1);
       left > 0 && window.position < until && is_sound; --left) {
    const std::uint32_t symbol = literals_.Decode(in);
    if (symbol < 256) {
      window.Put(static_cast<std::uint8_t>(symbol));
    } else if (symbol >= kFirstLengthSymbol) {
      is_sound = DecodeMatch(symbol - kFirstLengthSymbol, in, window);
    } else if (symbol >= kFirstDistanceSymbol) {
      is_sound = DecodeRepeat(symbol - kFirstDistanceSymbol, in, window);
    } else if (symbol == kRepeatLastSymbol) {
      if (last_length_ != 0) is_sound = window.Copy(last_distances_[0], last_length_);
    } else {
      is_filter = true;
      break;
    }
  }
  reader_.Cursor() = in;
  window_.Set(window);
  if (!is_sound) throw Failure{ports::kRarBadData};
  return is_filter;
}

inline bool Rar5Decoder::DecodeMatch(std::uint32_t slot, BitCursor& in,
                                     SlidingWindow::Cursor& window) {
  std::uint32_t length = TakeLength(slot, in);
  const std::uint32_t distance_slot = distances_.Decode(in);
  std::uint64_t distance = 1;
  if (distance_slot < 4) {
    distance += distance_slot;
  } else {
    const unsigned bits = distance_slot / 2 - 1;
    distance += std::uint64_t{2 + distance_slot % 2} << bits;
    if (bits < 4) {
      distance += in.Take(bits);
    } else {
      distance += std::uint64_t{in.Take(bits - 4)} << 4U;
      distance += low_distances_.Decode(in);
    }
  }
  if (distance > 0x100) ++length;
  if (distance > 0x2000) ++length;
  if (distance > 0x40000) ++length;
  last_distances_ = {distance, last_distances_[0], last_distances_[1], last_distances_[2]};
  last_length_ = length;
  return window.Copy(distance, length);
}

inline bool Rar5Decoder::DecodeRepeat(std::uint32_t index, BitCursor& in,
                                      SlidingWindow::Cursor& window) {
  const std::uint64_t distance = last_distances_[index];
  for (; index > 0; --index)
    last_distances_[index] = last_distances_[index - 1];
  last_distances_[0] = distance;
  last_length_ = TakeLength(repeat_lengths_.Decode(in), in);
  return window.Copy(distance, last_length_);
}

// One to four bytes, lowest first.
std::uint32_t Rar5Decoder::TakeFilterNumber() {
  const unsigned bytes = reader_.Take(2) + 1;
  std::uint32_t number = 0;
  for (unsigned i = 0; i < bytes; ++i)
    number |= reader_.Take(8) << (8 * i);
  return number;
}

void Rar5Decoder::ReadFilter() {
  const std::uint64_t start = window_.Position() - entry_start_ + TakeFilterNumber();
  const std::uint32_t length = TakeFilterNumber();
  static constexpr std::array kKinds = {FilterKind::kDelta, FilterKind::kX86Call,
                                        FilterKind::kX86Jump, FilterKind::kArm};
  const std::uint32_t kind = reader_.Take(3);
  if (kind >= kKinds.size()) throw Failure{ports::kRarBadData};
  FilterRequest request;
  request.kind = kKinds[kind];
  request.position_wraps = true;
  if (request.kind == FilterKind::kDelta) request.channels = reader_.Take(5) + 1;
  pipeline_.Announce(start, length, request);
}

void Rar5Decoder::Flush() {
  window_.ForEachPiece(flushed_,
                       [this](std::span<const std::uint8_t> piece) { pipeline_.Write(piece); });
  flushed_ = window_.Position();
}

}  // namespace companion::rar
