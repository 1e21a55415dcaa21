#include "companion/rar/rar3_decoder.h"

#include <algorithm>
#include <limits>

#include "companion/rar/code_lengths.h"
#include "companion/rar/failure.h"

namespace companion::rar {
namespace {

constexpr std::size_t kLiteralCodes = 299;
constexpr std::size_t kDistanceCodes = 60;
constexpr std::size_t kLowDistanceCodes = 17;
constexpr std::size_t kRepeatCodes = 28;

constexpr std::uint32_t kEndSymbol = 256;
constexpr std::uint32_t kFilterSymbol = 257;
constexpr std::uint32_t kRepeatLastSymbol = 258;
constexpr std::uint32_t kFirstDistanceSymbol = 259;
constexpr std::uint32_t kFirstShortSymbol = 263;
constexpr std::uint32_t kFirstLengthSymbol = 271;
constexpr std::uint32_t kNoCommand = 0;

constexpr std::uint64_t kDictionary = 4U << 20U;
constexpr std::size_t kFlushSize = 128U << 10U;
// No symbol takes more bits, its extra bits included.
constexpr std::ptrdiff_t kSymbolBits = 80;
// How many packed bytes may be left when an entry is complete without an end mark.
constexpr std::ptrdiff_t kRestBits = 64;

// A value is a base and some extra bits.
struct Slot {
  std::uint32_t base;
  std::uint8_t bits;
};

template <std::size_t kCount, typename Bits>
constexpr std::array<Slot, kCount> MakeSlots(Bits bits_of) {
  std::array<Slot, kCount> slots{};
  std::uint32_t base = 0;
  for (std::size_t i = 0; i < kCount; ++i) {
    slots[i] = {base, static_cast<std::uint8_t>(bits_of(i))};
    base += 1U << slots[i].bits;
  }
  return slots;
}

constexpr auto kLengthSlots =
    MakeSlots<kRepeatCodes>([](std::size_t i) { return i < 8 ? 0 : i / 4 - 1; });
constexpr auto kDistanceSlots = MakeSlots<kDistanceCodes>([](std::size_t i) {
  if (i < 4) return std::size_t{0};
  if (i < 36) return i / 2 - 1;
  return std::size_t{i < 48 ? 16U : 18U};
});
constexpr std::array<Slot, 8> kShortSlots = {
    {{0, 2}, {4, 2}, {8, 3}, {16, 4}, {32, 5}, {64, 6}, {128, 6}, {192, 6}}};
static_assert(kLengthSlots[27].base == 224 && kDistanceSlots[35].base == 196608 &&
              kDistanceSlots[59].base == 3932160);

std::uint32_t TakeSlot(const Slot& slot, BitCursor& in) {
  return slot.base + in.Take(slot.bits);
}

}  // namespace

void Rar3Decoder::Decode(const Entry& entry, PackedSource& source, ContentSink& sink) {
  if (entry.solid && !can_go_on_) throw Failure{ports::kRarBadData};
  if (!entry.solid) ResetState();
  can_go_on_ = false;
  window_.SetDictionary(kDictionary);
  reader_.Begin(source);
  pipeline_.Begin(sink);
  entry_start_ = window_.Position();
  flushed_ = entry_start_;
  entry_end_ = std::numeric_limits<std::uint64_t>::max();
  if (entry.unpacked_size) entry_end_ = entry_start_ + *entry.unpacked_size;
  if (needs_block_) BeginBlock();
  Next next = Next::kSameBlock;
  while (next != Next::kEndOfEntry) {
    MakeRoom();
    next = in_model_ ? RunModel() : RunCodes();
  }
  Flush();
  can_go_on_ = true;
}

void Rar3Decoder::ResetState() {
  window_.Reset();
  filters_.Reset();
  lengths_.fill(0);
  last_distances_.fill(0);
  last_length_ = 0;
  model_.Forget();
  escape_ = 2;
  in_model_ = false;
  needs_block_ = true;
}

void Rar3Decoder::MakeRoom() {
  if (window_.Position() - flushed_ >= kFlushSize) Flush();
  window_.Reserve(kFlushSize + SlidingWindow::kMaxMatch,
                  entry_end_ - std::min(entry_end_, window_.Position()));
}

void Rar3Decoder::BeginBlock() {
  reader_.AlignToByte();
  needs_block_ = false;
  in_model_ = reader_.Take(1) != 0;
  if (in_model_) {
    BeginModel();
  } else {
    ReadTables();
  }
}

// Flags: 0x20 a new model, its order in the low bits, followed by its memory in MiB; 0x40 the
// escape character follows.
void Rar3Decoder::BeginModel() {
  const std::uint32_t flags = reader_.Take(7);
  const bool is_new = (flags & 0x20U) != 0;
  const std::uint32_t memory = is_new ? (reader_.Take(8) + 1) << 20U : 0;
  if ((flags & 0x40U) != 0) escape_ = static_cast<std::uint8_t>(reader_.Take(8));
  range_.Begin(reader_);
  if (is_new) {
    std::uint32_t order = (flags & 0x1FU) + 1;
    if (order > 16) order = 16 + (order - 16) * 3;
    if (order < 2) throw Failure{ports::kRarBadData};
    model_.Start(order, memory);
  }
  if (!model_.IsStarted()) throw Failure{ports::kRarBadData};
}

void Rar3Decoder::ReadTables() {
  if (reader_.Take(1) == 0) lengths_.fill(0);
  ReadCodeLengths(reader_, true, lengths_);
  const std::span<const std::uint8_t> all(lengths_);
  literals_.Build(all.first(kLiteralCodes));
  distances_.Build(all.subspan(kLiteralCodes, kDistanceCodes));
  low_distances_.Build(all.subspan(kLiteralCodes + kDistanceCodes, kLowDistanceCodes));
  repeat_lengths_.Build(all.last(kRepeatCodes));
  low_distance_ = 0;
  low_distance_repeats_ = 0;
}

Rar3Decoder::Next Rar3Decoder::RunCodes() {
  if (window_.Position() >= entry_end_) return FinishCodes();
  const std::uint32_t command =
      DecodeSymbols(std::min(flushed_ + kFlushSize, entry_end_), reader_.UncheckedBits());
  reader_.CheckNotOverrun();
  if (command == kEndSymbol) return EndCodes();
  if (command == kFilterSymbol) {
    ReadFilter([this] { return static_cast<std::uint8_t>(reader_.Take(8)); });
  }
  return Next::kSameBlock;
}

// The content is complete; only commands may follow.
Rar3Decoder::Next Rar3Decoder::FinishCodes() {
  const std::ptrdiff_t left = reader_.UncheckedBits();
  BitCursor in = reader_.Cursor();
  const std::uint32_t symbol = literals_.Decode(in);
  const bool is_command = symbol == kEndSymbol || symbol == kFilterSymbol;
  if (left <= 0 || (!is_command && left < kRestBits)) return Next::kEndOfEntry;
  if (!is_command || window_.Position() > entry_end_) throw Failure{ports::kRarBadData};
  reader_.Cursor() = in;
  if (symbol == kEndSymbol) return EndCodes();
  ReadFilter([this] { return static_cast<std::uint8_t>(reader_.Take(8)); });
  return Next::kSameBlock;
}

// A set bit means another block of this entry; otherwise a second bit says whether the next entry
// begins with a block header.
Rar3Decoder::Next Rar3Decoder::EndCodes() {
  if (reader_.Take(1) != 0) {
    BeginBlock();
    return Next::kSameBlock;
  }
  needs_block_ = reader_.Take(1) != 0;
  return Next::kEndOfEntry;
}

// Decodes as many symbols as the next `bits` certainly contain, but at least one. Returns the
// command that ended the run, or kNoCommand.
std::uint32_t Rar3Decoder::DecodeSymbols(std::uint64_t until, std::ptrdiff_t bits) {
  BitCursor in = reader_.Cursor();
  SlidingWindow::Cursor window = window_.Take();
  std::uint32_t command = kNoCommand;
  bool is_sound = true;
  for (std::ptrdiff_t left = std::max<std::ptrdiff_t>(bits / kSymbolBits, 1);
       left > 0 && window.position < until && is_sound; --left) {
    const std::uint32_t symbol = literals_.Decode(in);
    if (symbol < 256) {
      window.Put(static_cast<std::uint8_t>(symbol));
    } else if (symbol >= kFirstLengthSymbol) {
      is_sound = DecodeMatch(symbol - kFirstLengthSymbol, in, window);
    } else if (symbol >= kFirstShortSymbol) {
      is_sound = DecodeShort(symbol - kFirstShortSymbol, in, window);
    } else if (symbol >= kFirstDistanceSymbol) {
      is_sound = DecodeRepeat(symbol - kFirstDistanceSymbol, in, window);
    } else if (symbol == kRepeatLastSymbol) {
      if (last_length_ != 0) is_sound = window.Copy(last_distances_[0], last_length_);
    } else {
      command = symbol;
      break;
    }
  }
  reader_.Cursor() = in;
  window_.Set(window);
  if (!is_sound) throw Failure{ports::kRarBadData};
  return command;
}

inline void Rar3Decoder::Remember(std::uint32_t distance, std::uint32_t length) {
  last_distances_ = {distance, last_distances_[0], last_distances_[1], last_distances_[2]};
  last_length_ = length;
}

inline bool Rar3Decoder::DecodeMatch(std::uint32_t slot, BitCursor& in,
                                     SlidingWindow::Cursor& window) {
  std::uint32_t length = TakeSlot(kLengthSlots[slot], in) + 3;
  const std::uint32_t distance_slot = distances_.Decode(in);
  const Slot& from = kDistanceSlots[distance_slot];
  std::uint32_t distance = from.base + 1;
  if (distance_slot < 10) {
    distance += in.Take(from.bits);
  } else {
    // The low four bits have a code of their own, and often stay the same for a while.
    distance += in.Take(from.bits - 4U) << 4U;
    if (low_distance_repeats_ > 0) {
      --low_distance_repeats_;
    } else {
      const std::uint32_t low = low_distances_.Decode(in);
      if (low == 16) {
        low_distance_repeats_ = 15;
      } else {
        low_distance_ = low;
      }
    }
    distance += low_distance_;
  }
  if (distance >= 0x2000) ++length;
  if (distance >= 0x40000) ++length;
  Remember(distance, length);
  return window.Copy(distance, length);
}

inline bool Rar3Decoder::DecodeShort(std::uint32_t slot, BitCursor& in,
                                     SlidingWindow::Cursor& window) {
  Remember(TakeSlot(kShortSlots[slot], in) + 1, 2);
  return window.Copy(last_distances_[0], 2);
}

inline bool Rar3Decoder::DecodeRepeat(std::uint32_t index, BitCursor& in,
                                      SlidingWindow::Cursor& window) {
  const std::uint32_t distance = last_distances_[index];
  for (; index > 0; --index)
    last_distances_[index] = last_distances_[index - 1];
  last_distances_[0] = distance;
  last_length_ = TakeSlot(kLengthSlots[repeat_lengths_.Decode(in)], in) + 2;
  return window.Copy(distance, last_length_);
}

Rar3Decoder::Next Rar3Decoder::RunModel() {
  if (window_.Position() >= entry_end_) return FinishModel();
  const std::uint64_t until = std::min(flushed_ + kFlushSize, entry_end_);
  SlidingWindow::Cursor window = window_.Take();
  bool is_escape = false;
  while (window.position < until && !is_escape) {
    const std::uint8_t symbol = model_.Decode(range_);
    is_escape = symbol == escape_;
    if (!is_escape) window.Put(symbol);
  }
  window_.Set(window);
  return is_escape ? ObeyModel(model_.Decode(range_)) : Next::kSameBlock;
}

// The content is complete; only commands may follow.
Rar3Decoder::Next Rar3Decoder::FinishModel() {
  const bool is_near_end = reader_.UncheckedBits() < kRestBits;
  if (window_.Position() > entry_end_) throw Failure{ports::kRarBadData};
  needs_block_ = true;
  if (model_.Decode(range_) == escape_) {
    const std::uint8_t command = model_.Decode(range_);
    if (command == 0 || command == 2 || command == 3) return ObeyModel(command);
  }
  if (!is_near_end) throw Failure{ports::kRarBadData};
  return Next::kEndOfEntry;
}

Rar3Decoder::Next Rar3Decoder::ObeyModel(std::uint8_t command) {
  switch (command) {
    case 0:
      BeginBlock();
      break;
    case 2:
      needs_block_ = true;
      return Next::kEndOfEntry;
    case 3:
      ReadFilter([this] { return model_.Decode(range_); });
      break;
    case 4: {
      std::uint32_t distance = 0;
      for (int i = 0; i < 3; ++i)
        distance = distance << 8U | model_.Decode(range_);
      CopyForModel(distance + 2, model_.Decode(range_) + 32U);
      break;
    }
    case 5:
      CopyForModel(1, model_.Decode(range_) + 4U);
      break;
    default: {
      SlidingWindow::Cursor window = window_.Take();
      window.Put(escape_);
      window_.Set(window);
    }
  }
  return Next::kSameBlock;
}

void Rar3Decoder::CopyForModel(std::uint32_t distance, std::uint32_t length) {
  SlidingWindow::Cursor window = window_.Take();
  if (!window.Copy(distance, length)) throw Failure{ports::kRarBadData};
  window_.Set(window);
}

// The length of a filter's declaration is in its flags, or in one or two bytes after them.
template <typename TakeByte>
void Rar3Decoder::ReadFilter(TakeByte take_byte) {
  const std::uint8_t flags = take_byte();
  std::uint32_t length = (flags & 7U) + 1;
  if (length == 7) {
    length = take_byte() + 7U;
  } else if (length == 8) {
    length = static_cast<std::uint32_t>(take_byte()) << 8U;
    length |= take_byte();
  }
  declaration_.resize(length);
  for (std::uint8_t& byte : declaration_)
    byte = take_byte();
  filters_.Declare(flags, declaration_, window_.Position() - entry_start_, pipeline_);
}

void Rar3Decoder::Flush() {
  window_.ForEachPiece(flushed_,
                       [this](std::span<const std::uint8_t> piece) { pipeline_.Write(piece); });
  flushed_ = window_.Position();
}

}  // namespace companion::rar
