#include "companion/rar/ppmd_model.h"

#include <algorithm>
#include <cstring>

#include "companion/rar/failure.h"

namespace companion::rar {
namespace {

constexpr std::uint32_t kMaxFrequency = 124;
constexpr std::uint32_t kStateSize = 6;
constexpr unsigned kPeriodBits = 7;
constexpr std::uint32_t kBinaryScale = 1U << 14U;

template <typename Value>
Value Load(const std::uint8_t* bytes) {
  Value value{};
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

template <typename Value>
void Store(std::uint8_t* bytes, Value value) {
  std::memcpy(bytes, &value, sizeof value);
}

std::uint32_t HighBitsFlag(std::uint8_t symbol) {
  return symbol >= 0x40 ? 8 : 0;
}

std::uint32_t StateUnits(std::uint32_t symbols) {
  return (symbols + 1) / 2;
}

[[noreturn]] void ThrowDamaged() {
  throw Failure{kRarBadData};
}

}  // namespace

void RangeDecoder::Begin(BitReader& reader) {
  reader_ = &reader;
  low_ = 0;
  range_ = 0xFFFFFFFF;
  code_ = 0;
  for (int i = 0; i < 4; ++i)
    code_ = code_ << 8U | reader.TakeByte();
}

inline std::uint32_t RangeDecoder::Threshold(std::uint32_t total) {
  range_ /= total;
  if (range_ == 0) ThrowDamaged();
  return (code_ - low_) / range_;
}

inline void RangeDecoder::Take(std::uint32_t start, std::uint32_t size) {
  constexpr std::uint32_t kTop = 1U << 24U;
  constexpr std::uint32_t kBottom = 1U << 15U;
  low_ += start * range_;
  range_ *= size;
  for (;;) {
    if ((low_ ^ (low_ + range_)) >= kTop) {
      if (range_ >= kBottom) return;
      range_ = (0U - low_) & (kBottom - 1);
    }
    code_ = code_ << 8U | reader_->TakeByte();
    range_ <<= 8U;
    low_ <<= 8U;
  }
}

class PpmdModel::State {
 public:
  explicit State(std::uint8_t* bytes) : bytes_(bytes) {}
  std::uint8_t symbol() const { return bytes_[0]; }
  std::uint32_t frequency() const { return bytes_[1]; }
  Ref successor() const { return Load<Ref>(bytes_ + 2); }
  void SetSymbol(std::uint8_t symbol) { bytes_[0] = symbol; }
  void SetFrequency(std::uint32_t frequency) { bytes_[1] = static_cast<std::uint8_t>(frequency); }
  void SetSuccessor(Ref successor) { Store(bytes_ + 2, successor); }
  void Assign(State other) { std::memcpy(bytes_, other.bytes_, kStateSize); }
  void SwapWith(State other) {
    std::uint8_t kept[kStateSize];
    std::memcpy(kept, bytes_, kStateSize);
    Assign(other);
    std::memcpy(other.bytes_, kept, kStateSize);
  }
  State Next() const { return State(bytes_ + kStateSize); }
  State Previous() const { return State(bytes_ - kStateSize); }
  State operator[](std::uint32_t index) const { return State(bytes_ + index * kStateSize); }
  bool operator==(const State& other) const { return bytes_ == other.bytes_; }
  std::uint8_t* bytes() const { return bytes_; }

 private:
  std::uint8_t* bytes_;
};

struct PpmdModel::StateValue {
  explicit StateValue(State state) { std::memcpy(bytes, state.bytes(), kStateSize); }
  State AsState() { return State(bytes); }
  std::uint8_t bytes[kStateSize];
};

class PpmdModel::Context {
 public:
  explicit Context(std::uint8_t* bytes) : bytes_(bytes) {}
  std::uint32_t symbols() const { return Load<std::uint16_t>(bytes_); }
  std::uint32_t sum() const { return Load<std::uint16_t>(bytes_ + 2); }
  Ref states() const { return Load<Ref>(bytes_ + 4); }
  Ref suffix() const { return Load<Ref>(bytes_ + 8); }
  State OnlyState() const { return State(bytes_ + 2); }
  void SetSymbols(std::uint32_t symbols) { Store(bytes_, static_cast<std::uint16_t>(symbols)); }
  void SetSum(std::uint32_t sum) { Store(bytes_ + 2, static_cast<std::uint16_t>(sum)); }
  void SetStates(Ref states) { Store(bytes_ + 4, states); }
  void SetSuffix(Ref suffix) { Store(bytes_ + 8, suffix); }
  static constexpr Ref kOnlyStateOffset = 2;

 private:
  std::uint8_t* bytes_;
};

inline PpmdModel::State PpmdModel::StateAt(Ref ref) {
  return State(heap_.At(ref));
}
inline PpmdModel::Context PpmdModel::ContextAt(Ref ref) {
  return Context(heap_.At(ref));
}

PpmdModel::PpmdModel() {
  std::fill(binary_column_.begin(), binary_column_.end(), std::uint8_t{6});
  binary_column_[0] = 0;
  binary_column_[1] = 2;
  std::fill(binary_column_.begin() + 2, binary_column_.begin() + 11, std::uint8_t{4});
  // Rows of the escape estimates by the number of symbols that are left: 0, 1, 2, then runs that
  // are one longer each time.
  unsigned row = 0;
  unsigned left = 1;
  for (unsigned i = 0; i < 256; ++i) {
    if (i < 3) {
      row = i;
    } else if (--left == 0) {
      ++row;
      left = row - 2;
    }
    see_row_[i] = static_cast<std::uint8_t>(row);
  }
}

void PpmdModel::Start(std::uint32_t order, std::uint32_t memory) {
  order_ = 0;
  heap_.Resize(memory);
  order_ = order;
  masks_.fill(0);
  mask_stamp_ = 0;
  Restart();
}

void PpmdModel::Restart() {
  heap_.Restart();
  order_fall_ = order_;
  initial_run_length_ = -static_cast<std::int32_t>(std::min<std::uint32_t>(order_, 12)) - 1;
  run_length_ = initial_run_length_;
  previous_success_ = 0;

  min_context_ = max_context_ = heap_.AllocateContext();
  found_ = heap_.Allocate(128);
  Context root = ContextAt(min_context_);
  root.SetSuffix(0);
  root.SetSymbols(256);
  root.SetSum(257);
  root.SetStates(found_);
  for (std::uint32_t i = 0; i < 256; ++i) {
    State state = StateAt(found_)[i];
    state.SetSymbol(static_cast<std::uint8_t>(i));
    state.SetFrequency(1);
    state.SetSuccessor(0);
  }

  static constexpr std::array<std::uint16_t, 8> kEscapes = {0x3CDD, 0x1F3F, 0x59BF, 0x48F3,
                                                            0x64A1, 0x5ABC, 0x6632, 0x6051};
  for (std::uint32_t row = 0; row < binary_.size(); ++row) {
    for (std::size_t column = 0; column < 64; ++column) {
      binary_[row][column] =
          static_cast<std::uint16_t>(kBinaryScale - kEscapes[column % 8] / (row + 2));
    }
  }
  for (std::uint32_t row = 0; row < see_.size(); ++row) {
    see_[row].fill(
        {static_cast<std::uint16_t>((5 * row + 10) << (kPeriodBits - 4)), kPeriodBits - 4, 4});
  }
  no_see_ = {0, kPeriodBits, 64};
}

std::uint8_t PpmdModel::Decode(RangeDecoder& decoder) {
  Ref state = 0;
  if (ContextAt(min_context_).symbols() != 1) {
    state = DecodeAmongMany(decoder);
    if (state != 0) {
      found_ = state;
      const std::uint8_t symbol = StateAt(state).symbol();
      if (state == ContextAt(min_context_).states()) {
        UpdateFirst();
      } else {
        UpdateOther();
      }
      return symbol;
    }
  } else {
    state = DecodeBinary(decoder);
    if (state != 0) {
      found_ = state;
      State found = StateAt(state);
      const std::uint8_t symbol = found.symbol();
      if (found.frequency() < 128) found.SetFrequency(found.frequency() + 1);
      previous_success_ = 1;
      ++run_length_;
      GoOn();
      return symbol;
    }
  }
  found_ = DecodeAfterEscapes(decoder);
  const std::uint8_t symbol = StateAt(found_).symbol();
  UpdateAfterEscape();
  return symbol;
}

inline void PpmdModel::BeginMask() {
  if (++mask_stamp_ == 0) {
    masks_.fill(0);
    mask_stamp_ = 1;
  }
}

// 0: an escape.
inline PpmdModel::Ref PpmdModel::DecodeAmongMany(RangeDecoder& decoder) {
  const Context context = ContextAt(min_context_);
  const std::uint32_t sum = context.sum();
  const Ref states = context.states();
  if (sum == 0) ThrowDamaged();
  const std::uint32_t threshold = decoder.Threshold(sum);
  State state = StateAt(states);
  std::uint32_t high = state.frequency();
  if (threshold < high) {
    decoder.Take(0, high);
    return states;
  }
  previous_success_ = 0;
  const std::uint32_t symbols = context.symbols();
  for (std::uint32_t i = 1; i < symbols; ++i) {
    state = state.Next();
    high += state.frequency();
    if (high > threshold) {
      decoder.Take(high - state.frequency(), state.frequency());
      return states + i * kStateSize;
    }
  }
  if (threshold >= sum) ThrowDamaged();
  high_bits_flag_ = HighBitsFlag(StateAt(found_).symbol());
  decoder.Take(high, sum - high);
  BeginMask();
  State masked = StateAt(states);
  for (std::uint32_t i = symbols; i > 0; --i, masked = masked.Next())
    masks_[masked.symbol()] = mask_stamp_;
  return 0;
}

inline PpmdModel::Ref PpmdModel::DecodeBinary(RangeDecoder& decoder) {
  static constexpr std::array<std::uint8_t, 16> kEscapeByEstimate = {25, 14, 9, 7, 5, 5, 4, 4,
                                                                     4,  3,  3, 3, 2, 2, 2, 2};
  const Context context = ContextAt(min_context_);
  const State only = context.OnlyState();
  high_bits_flag_ = HighBitsFlag(StateAt(found_).symbol());
  const std::size_t column = previous_success_ +
                             binary_column_[(ContextAt(context.suffix()).symbols() - 1) & 0xFFU] +
                             high_bits_flag_ + 2 * HighBitsFlag(only.symbol()) +
                             ((static_cast<std::uint32_t>(run_length_) >> 26U) & 0x20U);
  std::uint16_t& estimate = binary_[(only.frequency() - 1) & 0x7FU][column];
  const std::uint32_t value = estimate;
  const std::uint32_t mean = (value + (1U << (kPeriodBits - 2))) >> kPeriodBits;
  if (decoder.Threshold(kBinaryScale) < value) {
    decoder.Take(0, value);
    estimate = static_cast<std::uint16_t>(value + (1U << kPeriodBits) - mean);
    return min_context_ + Context::kOnlyStateOffset;
  }
  decoder.Take(value, kBinaryScale - value);
  estimate = static_cast<std::uint16_t>(value - mean);
  initial_escape_ = kEscapeByEstimate[estimate >> 10U];
  BeginMask();
  masks_[only.symbol()] = mask_stamp_;
  previous_success_ = 0;
  return 0;
}

// Goes to shorter contexts until one knows the symbol.
PpmdModel::Ref PpmdModel::DecodeAfterEscapes(RangeDecoder& decoder) {
  for (;;) {
    const std::uint32_t masked = ContextAt(min_context_).symbols();
    do {
      ++order_fall_;
      min_context_ = ContextAt(min_context_).suffix();
      if (min_context_ == 0) ThrowDamaged();
    } while (ContextAt(min_context_).symbols() == masked);
    const Context context = ContextAt(min_context_);
    const std::uint32_t symbols = context.symbols();
    if (symbols < masked) ThrowDamaged();

    std::array<std::uint8_t*, 256> candidates;  // filled as far as `count`
    std::uint32_t count = 0;
    std::uint32_t high = 0;
    State state = StateAt(context.states());
    for (std::uint32_t i = 0; i < symbols; ++i, state = state.Next()) {
      if (masks_[state.symbol()] == mask_stamp_) continue;
      high += state.frequency();
      candidates[count++] = state.bytes();
    }
    std::uint32_t total = 0;
    See& see = EscapeEstimate(masked, total);
    total += high;
    const std::uint32_t threshold = decoder.Threshold(total);
    if (threshold < high) {
      std::uint32_t i = 0;
      std::uint32_t end = State(candidates[0]).frequency();
      while (end <= threshold)
        end += State(candidates[++i]).frequency();
      const State chosen(candidates[i]);
      decoder.Take(end - chosen.frequency(), chosen.frequency());
      if (see.shift < kPeriodBits && --see.count == 0) {
        see.sum = static_cast<std::uint16_t>(see.sum << 1U);
        see.count = static_cast<std::uint8_t>(3U << see.shift++);
      }
      return static_cast<Ref>(chosen.bytes() - heap_.At(0));
    }
    if (threshold >= total) ThrowDamaged();
    decoder.Take(high, total - high);
    see.sum = static_cast<std::uint16_t>(see.sum + total);
    for (std::uint32_t i = 0; i < count; ++i)
      masks_[State(candidates[i]).symbol()] = mask_stamp_;
  }
}

PpmdModel::See& PpmdModel::EscapeEstimate(std::uint32_t masked, std::uint32_t& escape) {
  const Context context = ContextAt(min_context_);
  const std::uint32_t symbols = context.symbols();
  if (symbols == 256 || context.suffix() == 0) {
    escape = 1;
    return no_see_;
  }
  const std::uint32_t left = symbols - masked;
  const std::uint32_t in_suffix = ContextAt(context.suffix()).symbols();
  const std::size_t column = (left < in_suffix - symbols ? 1U : 0U) +
                             (context.sum() < 11 * symbols ? 2U : 0U) + (masked > left ? 4U : 0U) +
                             high_bits_flag_;
  See& see = see_[see_row_[(left - 1) & 0xFFU]][column];
  const std::uint32_t mean = see.sum >> see.shift;
  see.sum = static_cast<std::uint16_t>(see.sum - mean);
  escape = std::max<std::uint32_t>(mean, 1);
  return see;
}

inline void PpmdModel::UpdateFirst() {
  Context context = ContextAt(min_context_);
  State found = StateAt(found_);
  previous_success_ = 2 * found.frequency() > context.sum() ? 1 : 0;
  run_length_ += static_cast<std::int32_t>(previous_success_);
  context.SetSum(context.sum() + 4);
  found.SetFrequency(found.frequency() + 4);
  if (found.frequency() > kMaxFrequency) Rescale();
  GoOn();
}

inline void PpmdModel::UpdateOther() {
  Context context = ContextAt(min_context_);
  State found = StateAt(found_);
  found.SetFrequency(found.frequency() + 4);
  context.SetSum(context.sum() + 4);
  if (found.frequency() > found.Previous().frequency()) {
    found.SwapWith(found.Previous());
    found_ -= kStateSize;
    if (found.Previous().frequency() > kMaxFrequency) Rescale();
  }
  GoOn();
}

void PpmdModel::UpdateAfterEscape() {
  Context context = ContextAt(min_context_);
  State found = StateAt(found_);
  context.SetSum(context.sum() + 4);
  found.SetFrequency(found.frequency() + 4);
  if (found.frequency() > kMaxFrequency) Rescale();
  run_length_ = initial_run_length_;
  UpdateModel();
}

// Halves the frequencies of the current context and sorts its symbols; the found one comes first.
void PpmdModel::Rescale() {
  Context context = ContextAt(min_context_);
  const State first = StateAt(context.states());
  State state = StateAt(found_);
  {
    StateValue kept(state);
    for (; !(state == first); state = state.Previous())
      state.Assign(state.Previous());
    state.Assign(kept.AsState());
  }
  std::uint32_t escape = context.sum() - state.frequency();
  const std::uint32_t adder = order_fall_ != 0 ? 1 : 0;
  state.SetFrequency((state.frequency() + 4 + adder) >> 1U);
  std::uint32_t sum = state.frequency();
  const std::uint32_t symbols = context.symbols();
  for (std::uint32_t i = 1; i < symbols; ++i) {
    state = state.Next();
    escape -= state.frequency();
    state.SetFrequency((state.frequency() + adder) >> 1U);
    sum += state.frequency();
    if (state.frequency() > state.Previous().frequency()) {
      StateValue kept(state);
      State place = state;
      do {
        place.Assign(place.Previous());
        place = place.Previous();
      } while (!(place == first) && kept.AsState().frequency() > place.Previous().frequency());
      place.Assign(kept.AsState());
    }
  }
  if (state.frequency() == 0) {
    std::uint32_t dropped = 0;
    for (; state.frequency() == 0; state = state.Previous())
      ++dropped;
    escape += dropped;
    const std::uint32_t kept_symbols = symbols - dropped;
    context.SetSymbols(kept_symbols);
    if (kept_symbols == 1) {
      StateValue only(first);
      std::uint32_t frequency = only.AsState().frequency();
      do {
        frequency -= frequency >> 1U;
        escape >>= 1U;
      } while (escape > 1);
      only.AsState().SetFrequency(frequency);
      heap_.Release(context.states(), StateUnits(symbols));
      context.OnlyState().Assign(only.AsState());
      found_ = min_context_ + Context::kOnlyStateOffset;
      return;
    }
    if (StateUnits(symbols) != StateUnits(kept_symbols)) {
      context.SetStates(
          heap_.Shrink(context.states(), StateUnits(symbols), StateUnits(kept_symbols)));
    }
  }
  context.SetSum(sum + escape - (escape >> 1U));
  found_ = context.states();
}

inline void PpmdModel::GoOn() {
  const Ref successor = StateAt(found_).successor();
  if (order_fall_ == 0 && successor > heap_.text()) {
    min_context_ = max_context_ = successor;
  } else {
    UpdateModel();
  }
}

// The context shorter by one byte learns the found symbol as well.
void PpmdModel::StrengthenSuffix() {
  const State found = StateAt(found_);
  Context context = ContextAt(ContextAt(min_context_).suffix());
  if (context.symbols() == 1) {
    State only = context.OnlyState();
    if (only.frequency() < 32) only.SetFrequency(only.frequency() + 1);
    return;
  }
  State state = StateAt(context.states());
  if (state.symbol() != found.symbol()) {
    do {
      state = state.Next();
    } while (state.symbol() != found.symbol());
    if (state.frequency() >= state.Previous().frequency()) {
      state.SwapWith(state.Previous());
      state = state.Previous();
    }
  }
  if (state.frequency() < kMaxFrequency - 9) {
    state.SetFrequency(state.frequency() + 2);
    context.SetSum(context.sum() + 2);
  }
}

void PpmdModel::UpdateModel() {
  State found = StateAt(found_);
  Ref end_context = found.successor();
  if (found.frequency() < kMaxFrequency / 4 && ContextAt(min_context_).suffix() != 0)
    StrengthenSuffix();

  if (order_fall_ == 0) {
    min_context_ = max_context_ = CreateSuccessors(true);
    if (min_context_ == 0) return Restart();
    found.SetSuccessor(min_context_);
    return;
  }

  heap_.AppendText(found.symbol());
  Ref successor = heap_.text();
  if (successor >= heap_.units_start()) return Restart();
  if (end_context != 0) {
    if (end_context <= successor) {
      end_context = CreateSuccessors(false);
      if (end_context == 0) return Restart();
    }
    if (--order_fall_ == 0) {
      successor = end_context;
      if (max_context_ != min_context_) heap_.DropText();
    }
  } else {
    found.SetSuccessor(successor);
    end_context = min_context_;
  }
  if (!AddToContexts(successor, end_context)) Restart();
}

// All contexts that escaped get the found symbol. False when memory is used up.
bool PpmdModel::AddToContexts(Ref successor, Ref end_context) {
  const Context min_context = ContextAt(min_context_);
  const std::uint32_t symbols = min_context.symbols();
  const std::uint32_t others = min_context.sum() - symbols - (StateAt(found_).frequency() - 1);
  for (Ref ref = max_context_; ref != min_context_; ref = ContextAt(ref).suffix()) {
    Context context = ContextAt(ref);
    const std::uint32_t known = context.symbols();
    if (known != 1) {
      if (known % 2 == 0) {
        const Ref states = heap_.Extend(context.states(), known / 2);
        if (states == 0) return false;
        context.SetStates(states);
      }
      const std::uint32_t sum = context.sum();
      context.SetSum(sum + (2 * known < symbols ? 1 : 0) +
                     2 * ((4 * known <= symbols && sum <= 8 * known) ? 1U : 0U));
    } else {
      const Ref states = heap_.Allocate(1);
      if (states == 0) return false;
      State state = StateAt(states);
      state.Assign(context.OnlyState());
      context.SetStates(states);
      const std::uint32_t frequency = state.frequency();
      state.SetFrequency(frequency < kMaxFrequency / 4 - 1 ? frequency * 2 : kMaxFrequency - 4);
      context.SetSum(state.frequency() + initial_escape_ + (symbols > 3 ? 1 : 0));
    }
    AddSymbol(context, others, known, successor);
  }
  max_context_ = min_context_ = end_context;
  return true;
}

void PpmdModel::AddSymbol(Context context, std::uint32_t others, std::uint32_t symbols,
                          Ref successor) {
  const State found = StateAt(found_);
  const std::uint32_t weight = 2 * found.frequency() * (context.sum() + 6);
  const std::uint32_t whole = others + context.sum();
  std::uint32_t frequency = 0;
  if (weight < 6 * whole) {
    frequency = 1 + (weight > whole ? 1 : 0) + (weight >= 4 * whole ? 1 : 0);
    context.SetSum(context.sum() + 3);
  } else {
    frequency = 4 + (weight >= 9 * whole ? 1U : 0U) + (weight >= 12 * whole ? 1U : 0U) +
                (weight >= 15 * whole ? 1U : 0U);
    context.SetSum(context.sum() + frequency);
  }
  State added = StateAt(context.states())[symbols];
  added.SetSuccessor(successor);
  added.SetSymbol(found.symbol());
  added.SetFrequency(frequency);
  context.SetSymbols(symbols + 1);
}

// Builds the contexts of one symbol that the found symbol leads to, from the shortest one that
// exists. 0 when memory is used up.
PpmdModel::Ref PpmdModel::CreateSuccessors(bool skip_found) {
  const State found = StateAt(found_);
  const Ref up_branch = found.successor();
  std::array<Ref, kMaxOrder> waiting{};
  std::uint32_t count = 0;
  if (!skip_found) waiting[count++] = found_;
  Ref ref = min_context_;
  while (ContextAt(ref).suffix() != 0) {
    ref = ContextAt(ref).suffix();
    const Context context = ContextAt(ref);
    Ref state = ref + Context::kOnlyStateOffset;
    if (context.symbols() != 1) {
      state = context.states();
      while (StateAt(state).symbol() != found.symbol())
        state += kStateSize;
    }
    const Ref successor = StateAt(state).successor();
    if (successor != up_branch) {
      ref = successor;
      if (count == 0) return ref;
      break;
    }
    if (count == waiting.size()) ThrowDamaged();
    waiting[count++] = state;
  }

  const std::uint8_t up_symbol = *heap_.At(up_branch);
  const Context context = ContextAt(ref);
  std::uint32_t up_frequency = context.OnlyState().frequency();
  if (context.symbols() != 1) {
    State state = StateAt(context.states());
    while (state.symbol() != up_symbol)
      state = state.Next();
    const std::uint32_t own = state.frequency() - 1;
    const std::uint32_t others = context.sum() - context.symbols() - own;
    if (others == 0) ThrowDamaged();
    up_frequency = 1 + (2 * own <= others ? (5 * own > others ? 1U : 0U)
                                          : (2 * own + 3 * others - 1) / (2 * others));
  }
  while (count > 0) {
    const Ref created = heap_.AllocateContext();
    if (created == 0) return 0;
    Context child = ContextAt(created);
    child.SetSymbols(1);
    child.OnlyState().SetSymbol(up_symbol);
    child.OnlyState().SetFrequency(up_frequency);
    child.OnlyState().SetSuccessor(up_branch + 1);
    child.SetSuffix(ref);
    StateAt(waiting[--count]).SetSuccessor(created);
    ref = created;
  }
  return ref;
}

}  // namespace companion::rar
