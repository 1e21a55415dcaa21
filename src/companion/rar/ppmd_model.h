#pragma once

#include <array>
#include <cstdint>

#include "companion/rar/ppmd_heap.h"
#include "companion/rar/ppmd_states.h"
#include "companion/rar/range_decoder.h"

namespace companion::rar {

// Prediction by partial matching, variant H (D. Shkarin, public domain): contexts of the last
// bytes, each with the symbols seen after it and how often; contexts of one symbol are predicted
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

  using State = PpmdState;
  using Context = PpmdContext;

  struct See {  // secondary estimation of an escape
    std::uint16_t sum = 0;
    std::uint8_t shift = 0;
    std::uint8_t count = 0;
  };

  State StateAt(Ref ref) { return State(heap_.At(ref)); }
  Context ContextAt(Ref ref) { return Context(heap_.At(ref)); }

  void Restart();
  // Decoding: ppmd_model.cpp. Returns the state found, or 0 for an escape.
  Ref DecodeBinary(RangeDecoder& decoder);
  Ref DecodeAmongMany(RangeDecoder& decoder);
  Ref DecodeAfterEscapes(RangeDecoder& decoder);
  See& EscapeEstimate(std::uint32_t masked, std::uint32_t& escape);
  void BeginMask();
  void UpdateFirst();
  void UpdateOther();
  void UpdateAfterEscape();
  // Learning: ppmd_learning.cpp.
  void Rescale();
  void GoOn();
  void UpdateModel();
  void StrengthenSuffix();
  bool AddToContexts(Ref successor, Ref end_context);
  void AddSymbol(Context context, std::uint32_t others, std::uint32_t symbols, Ref successor);
  Ref CreateSuccessors(bool skip_found);

  PpmdHeap heap_;
  std::uint32_t order_ = 0;  // 0: not started
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
  std::array<std::uint8_t, 256> masks_{};  // a symbol is masked if this equals mask_stamp_
  std::array<std::uint8_t, 256> see_row_{};
  std::array<std::uint8_t, 256> binary_column_{};
  std::array<std::array<See, 16>, 25> see_{};
  See no_see_;
  std::array<std::array<std::uint16_t, 64>, 128> binary_{};
};

}  // namespace companion::rar
