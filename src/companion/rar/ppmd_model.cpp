#include "companion/rar/ppmd_model.h"

#include <algorithm>
#include <cstring>

#include "companion/rar/failure.h"

namespace companion::rar {
namespace {

constexpr unsigned kPeriodBits = 7;
constexpr std::uint32_t kBinaryScale = 1U << 14U;

std::uint32_t HighBitsFlag(std::uint8_t symbol) {
  return symbol >= 0x40 ? 8 : 0;
}

[[noreturn]] void ThrowDamaged() {
  throw Failure{ports::kRarBadData};
}

}  // namespace

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
  if (ContextAt(min_context_).Symbols() != 1) {
    state = DecodeAmongMany(decoder);
    if (state != 0) {
      found_ = state;
      const std::uint8_t symbol = StateAt(state).Symbol();
      if (state == ContextAt(min_context_).States()) {
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
      const std::uint8_t symbol = found.Symbol();
      if (found.Frequency() < 128) found.SetFrequency(found.Frequency() + 1);
      previous_success_ = 1;
      ++run_length_;
      GoOn();
      return symbol;
    }
  }
  found_ = DecodeAfterEscapes(decoder);
  const std::uint8_t symbol = StateAt(found_).Symbol();
  UpdateAfterEscape();
  return symbol;
}

inline void PpmdModel::BeginMask() {
  if (++mask_stamp_ == 0) {
    masks_.fill(0);
    mask_stamp_ = 1;
  }
}

// Returns 0 for an escape.
inline PpmdModel::Ref PpmdModel::DecodeAmongMany(RangeDecoder& decoder) {
  const Context context = ContextAt(min_context_);
  const std::uint32_t sum = context.Sum();
  const Ref states = context.States();
  if (sum == 0) ThrowDamaged();
  const std::uint32_t threshold = decoder.Threshold(sum);
  State state = StateAt(states);
  std::uint32_t high = state.Frequency();
  if (threshold < high) {
    decoder.Take(0, high);
    return states;
  }
  previous_success_ = 0;
  const std::uint32_t symbols = context.Symbols();
  for (std::uint32_t i = 1; i < symbols; ++i) {
    state = state.Next();
    high += state.Frequency();
    if (high > threshold) {
      decoder.Take(high - state.Frequency(), state.Frequency());
      return states + i * State::kSize;
    }
  }
  if (threshold >= sum) ThrowDamaged();
  high_bits_flag_ = HighBitsFlag(StateAt(found_).Symbol());
  decoder.Take(high, sum - high);
  BeginMask();
  State masked = StateAt(states);
  for (std::uint32_t i = symbols; i > 0; --i, masked = masked.Next())
    masks_[masked.Symbol()] = mask_stamp_;
  return 0;
}

inline PpmdModel::Ref PpmdModel::DecodeBinary(RangeDecoder& decoder) {
  static constexpr std::array<std::uint8_t, 16> kEscapeByEstimate = {25, 14, 9, 7, 5, 5, 4, 4,
                                                                     4,  3,  3, 3, 2, 2, 2, 2};
  const Context context = ContextAt(min_context_);
  const State only = context.OnlyState();
  high_bits_flag_ = HighBitsFlag(StateAt(found_).Symbol());
  const std::size_t column = previous_success_ +
                             binary_column_[(ContextAt(context.Suffix()).Symbols() - 1) & 0xFFU] +
                             high_bits_flag_ + 2 * HighBitsFlag(only.Symbol()) +
                             ((static_cast<std::uint32_t>(run_length_) >> 26U) & 0x20U);
  std::uint16_t& estimate = binary_[(only.Frequency() - 1) & 0x7FU][column];
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
  masks_[only.Symbol()] = mask_stamp_;
  previous_success_ = 0;
  return 0;
}

// Tries shorter contexts until one knows the symbol.
PpmdModel::Ref PpmdModel::DecodeAfterEscapes(RangeDecoder& decoder) {
  for (;;) {
    const std::uint32_t masked = ContextAt(min_context_).Symbols();
    do {
      ++order_fall_;
      min_context_ = ContextAt(min_context_).Suffix();
      if (min_context_ == 0) ThrowDamaged();
    } while (ContextAt(min_context_).Symbols() == masked);
    const Context context = ContextAt(min_context_);
    const std::uint32_t symbols = context.Symbols();
    if (symbols < masked) ThrowDamaged();

    std::array<std::uint8_t*, 256> candidates;  // filled as far as `count`
    std::uint32_t count = 0;
    std::uint32_t high = 0;
    State state = StateAt(context.States());
    for (std::uint32_t i = 0; i < symbols; ++i, state = state.Next()) {
      if (masks_[state.Symbol()] == mask_stamp_) continue;
      high += state.Frequency();
      candidates[count++] = state.Bytes();
    }
    std::uint32_t total = 0;
    See& see = EscapeEstimate(masked, total);
    total += high;
    const std::uint32_t threshold = decoder.Threshold(total);
    if (threshold < high) {
      std::uint32_t i = 0;
      std::uint32_t end = State(candidates[0]).Frequency();
      while (end <= threshold)
        end += State(candidates[++i]).Frequency();
      const State chosen(candidates[i]);
      decoder.Take(end - chosen.Frequency(), chosen.Frequency());
      if (see.shift < kPeriodBits && --see.count == 0) {
        see.sum = static_cast<std::uint16_t>(see.sum << 1U);
        see.count = static_cast<std::uint8_t>(3U << see.shift++);
      }
      return static_cast<Ref>(chosen.Bytes() - heap_.At(0));
    }
    if (threshold >= total) ThrowDamaged();
    decoder.Take(high, total - high);
    see.sum = static_cast<std::uint16_t>(see.sum + total);
    for (std::uint32_t i = 0; i < count; ++i)
      masks_[State(candidates[i]).Symbol()] = mask_stamp_;
  }
}

PpmdModel::See& PpmdModel::EscapeEstimate(std::uint32_t masked, std::uint32_t& escape) {
  const Context context = ContextAt(min_context_);
  const std::uint32_t symbols = context.Symbols();
  if (symbols == 256 || context.Suffix() == 0) {
    escape = 1;
    return no_see_;
  }
  const std::uint32_t left = symbols - masked;
  const std::uint32_t in_suffix = ContextAt(context.Suffix()).Symbols();
  const std::size_t column = (left < in_suffix - symbols ? 1U : 0U) +
                             (context.Sum() < 11 * symbols ? 2U : 0U) + (masked > left ? 4U : 0U) +
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
  previous_success_ = 2 * found.Frequency() > context.Sum() ? 1 : 0;
  run_length_ += static_cast<std::int32_t>(previous_success_);
  context.SetSum(context.Sum() + 4);
  found.SetFrequency(found.Frequency() + 4);
  if (found.Frequency() > kPpmdMaxFrequency) Rescale();
  GoOn();
}

inline void PpmdModel::UpdateOther() {
  Context context = ContextAt(min_context_);
  State found = StateAt(found_);
  found.SetFrequency(found.Frequency() + 4);
  context.SetSum(context.Sum() + 4);
  if (found.Frequency() > found.Previous().Frequency()) {
    found.SwapWith(found.Previous());
    found_ -= State::kSize;
    if (found.Previous().Frequency() > kPpmdMaxFrequency) Rescale();
  }
  GoOn();
}

void PpmdModel::UpdateAfterEscape() {
  Context context = ContextAt(min_context_);
  State found = StateAt(found_);
  context.SetSum(context.Sum() + 4);
  found.SetFrequency(found.Frequency() + 4);
  if (found.Frequency() > kPpmdMaxFrequency) Rescale();
  run_length_ = initial_run_length_;
  UpdateModel();
}

inline void PpmdModel::GoOn() {
  const Ref successor = StateAt(found_).Successor();
  if (order_fall_ == 0 && successor > heap_.Text()) {
    min_context_ = max_context_ = successor;
  } else {
    UpdateModel();
  }
}

}  // namespace companion::rar
