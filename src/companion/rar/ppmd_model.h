#pragma once

#include <array>
#include <cstdint>

#include "companion/rar/bit_reader.h"
#include "companion/rar/ppmd_heap.h"

namespace companion::rar {

// The arithmetic decoder of RAR 3's PPMd blocks (a carry-less range coder, 32 bits).
class RangeDecoder {
 public:
  // Reads the first bytes of a block.
  void Begin(BitReader& reader);

  // Where the next symbol lies in a range of `total`. Not less than `total` in damaged data.
  std::uint32_t Threshold(std::uint32_t total);
  // Takes a symbol out: its part [start, start + size) of the total asked for.
  void Take(std::uint32_t start, std::uint32_t size);

 private:
  BitReader* reader_ = nullptr;
  std::uint32_t low_ = 0;
  std::uint32_t range_ = 0;
  std::uint32_t code_ = 0;
};

// Prediction by partial matching, variant H (D. Shkarin, public domain): contexts of the last
// bytes, each with the symbols seen behind it and how often; contexts of one symbol are predicted
// by adaptive bits, escapes by secondary estimation.
class PpmdModel {
 public:
  static constexpr std::uint32_t kMaxOrder = 64;

  PpmdModel();

  // Starts an empty model. Order 2 to kMaxOrder; memory in bytes.
  void Start(std::uint32_t order, std::uint32_t memory);
  bool IsStarted() const { return order_ != 0; }
  void Forget() { order_ = 0; }

  // The next byte. Throws Failure{kRarBadData}.
  std::uint8_t Decode(RangeDecoder& decoder);

 private:
  using Ref = PpmdHeap::Ref;

  // A symbol of a context, 6 bytes in the heap: symbol, frequency, and where it leads: a context,
  // or a place in the text when that context is not built yet, or nothing.
  class State;
  struct StateValue;
  // 12 bytes in the heap: number of symbols, sum of frequencies, states, the context shorter by one
  // byte. A context of one symbol holds that state in place of sum and states.
  class Context;

  struct See {  // secondary estimation of an escape
    std::uint16_t sum = 0;
    std::uint8_t shift = 0;
    std::uint8_t count = 0;
  };

  State StateAt(Ref ref);
  Context ContextAt(Ref ref);

  void Restart();
  Ref DecodeBinary(RangeDecoder& decoder);
  Ref DecodeAmongMany(RangeDecoder& decoder);
  Ref DecodeAfterEscapes(RangeDecoder& decoder);
  See& EscapeEstimate(std::uint32_t masked, std::uint32_t& escape);
  void BeginMask();
  void UpdateFirst();
  void UpdateOther();
  void UpdateAfterEscape();
  void Rescale();
  void GoOn();
  void UpdateModel();
  void StrengthenSuffix();
  bool AddToContexts(Ref successor, Ref end_context);
  void AddSymbol(Context context, std::uint32_t others, std::uint32_t symbols, Ref successor);
  Ref CreateSuccessors(bool skip_found);

  PpmdHeap heap_;
  std::uint32_t order_ = 0;
  Ref min_context_ = 0;
  Ref max_context_ = 0;
  Ref found_ = 0;
  std::uint32_t order_fall_ = 0;
  std::uint32_t initial_escape_ = 0;
  std::uint32_t previous_success_ = 0;
  std::uint32_t high_bits_flag_ = 0;
  std::int32_t run_length_ = 0;
  std::int32_t initial_run_length_ = 0;
  std::uint8_t mask_stamp_ = 0;
  std::array<std::uint8_t, 256> masks_{};  // a symbol is masked when this equals mask_stamp_
  std::array<std::uint8_t, 256> see_row_{};
  std::array<std::uint8_t, 256> binary_column_{};
  std::array<std::array<See, 16>, 25> see_{};
  See no_see_;
  std::array<std::array<std::uint16_t, 64>, 128> binary_{};
};

}  // namespace companion::rar
