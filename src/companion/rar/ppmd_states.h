#pragma once

#include <cstdint>
#include <cstring>

#include "companion/rar/ppmd_heap.h"

// The records of a PPMd model in its heap, read and written in place.
namespace companion::rar {

inline constexpr std::uint32_t kPpmdMaxFrequency = 124;

template <typename Value>
Value LoadPpmd(const std::uint8_t* bytes) {
  Value value{};
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

template <typename Value>
void StorePpmd(std::uint8_t* bytes, Value value) {
  std::memcpy(bytes, &value, sizeof value);
}

// A symbol of a context, 6 bytes in the heap: symbol, frequency and successor, which is a context,
// a place in the text if that context is not built yet, or nothing.
class PpmdState {
 public:
  static constexpr std::uint32_t kSize = 6;

  explicit PpmdState(std::uint8_t* bytes) : bytes_(bytes) {}
  std::uint8_t Symbol() const { return bytes_[0]; }
  std::uint32_t Frequency() const { return bytes_[1]; }
  PpmdHeap::Ref Successor() const { return LoadPpmd<PpmdHeap::Ref>(bytes_ + 2); }
  void SetSymbol(std::uint8_t symbol) { bytes_[0] = symbol; }
  void SetFrequency(std::uint32_t frequency) { bytes_[1] = static_cast<std::uint8_t>(frequency); }
  void SetSuccessor(PpmdHeap::Ref successor) { StorePpmd(bytes_ + 2, successor); }
  void Assign(PpmdState other) { std::memcpy(bytes_, other.bytes_, kSize); }
  void SwapWith(PpmdState other) {
    std::uint8_t kept[kSize];
    std::memcpy(kept, bytes_, kSize);
    Assign(other);
    std::memcpy(other.bytes_, kept, kSize);
  }
  PpmdState Next() const { return PpmdState(bytes_ + kSize); }
  PpmdState Previous() const { return PpmdState(bytes_ - kSize); }
  PpmdState operator[](std::uint32_t index) const { return PpmdState(bytes_ + index * kSize); }
  bool operator==(const PpmdState& other) const { return bytes_ == other.bytes_; }
  std::uint8_t* Bytes() const { return bytes_; }

 private:
  std::uint8_t* bytes_;
};

// A state outside the heap.
struct PpmdStateValue {
  explicit PpmdStateValue(PpmdState state) { std::memcpy(bytes, state.Bytes(), PpmdState::kSize); }
  PpmdState AsState() { return PpmdState(bytes); }
  std::uint8_t bytes[PpmdState::kSize];
};

// 12 bytes in the heap: number of symbols, sum of frequencies, states, the context shorter by one
// byte. A context of one symbol contains that state in place of sum and states.
class PpmdContext {
 public:
  explicit PpmdContext(std::uint8_t* bytes) : bytes_(bytes) {}
  std::uint32_t Symbols() const { return LoadPpmd<std::uint16_t>(bytes_); }
  std::uint32_t Sum() const { return LoadPpmd<std::uint16_t>(bytes_ + 2); }
  PpmdHeap::Ref States() const { return LoadPpmd<PpmdHeap::Ref>(bytes_ + 4); }
  PpmdHeap::Ref Suffix() const { return LoadPpmd<PpmdHeap::Ref>(bytes_ + 8); }
  PpmdState OnlyState() const { return PpmdState(bytes_ + 2); }
  void SetSymbols(std::uint32_t symbols) { StorePpmd(bytes_, static_cast<std::uint16_t>(symbols)); }
  void SetSum(std::uint32_t sum) { StorePpmd(bytes_ + 2, static_cast<std::uint16_t>(sum)); }
  void SetStates(PpmdHeap::Ref states) { StorePpmd(bytes_ + 4, states); }
  void SetSuffix(PpmdHeap::Ref suffix) { StorePpmd(bytes_ + 8, suffix); }
  static constexpr PpmdHeap::Ref kOnlyStateOffset = 2;

 private:
  std::uint8_t* bytes_;
};

}  // namespace companion::rar
