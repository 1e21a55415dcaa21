#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace companion::rar {

// The memory of a PPMd model: one block, addressed by 32-bit offsets (0: nothing), from which
// pieces of 1 to 128 units of 12 bytes are taken. Which piece a request gets, and when none is
// left, is part of the compression format (variant H of the model restarts then), so the order of
// the free lists, the splitting and the merging must stay exactly as they are.
//
//   text grows up |  ...  units_start | pieces grow up ->  lo ... hi  <- contexts grow down | end
class PpmdHeap {
 public:
  using Ref = std::uint32_t;

  static constexpr std::uint32_t kUnit = 12;
  static constexpr std::uint32_t kMaxPiece = 128;  // units

  PpmdHeap();

  // Allocates that many bytes, a multiple of 4. Throws Failure{kRarNoMemory}.
  void Resize(std::uint32_t size);
  // Frees everything and empties the text.
  void Restart();

  std::uint8_t* At(Ref ref) { return memory_.get() + ref; }
  const std::uint8_t* At(Ref ref) const { return memory_.get() + ref; }

  // The model's history, to which contexts that are not built yet refer.
  Ref Text() const { return text_; }
  Ref UnitsStart() const { return units_start_; }
  void AppendText(std::uint8_t byte) { *At(text_++) = byte; }
  void DropText() { --text_; }

  // Returns 0 if there is no memory left.
  Ref Allocate(std::uint32_t units) {
    const unsigned index = IndexFor(units);
    if (free_[index] != 0) return TakeFree(index);
    const std::uint32_t bytes = units_by_index_[index] * kUnit;
    if (bytes <= hi_ - lo_) {
      lo_ += bytes;
      return lo_ - bytes;
    }
    return AllocateRarely(index);
  }
  // Returns one unit for a context, taken from the other end.
  Ref AllocateContext() {
    if (hi_ != lo_) return hi_ -= kUnit;
    return free_[0] != 0 ? TakeFree(0) : AllocateRarely(0);
  }
  // Returns a piece of units + 1 with the old content, which is not moved if it has room already.
  Ref Extend(Ref piece, std::uint32_t units);
  // Returns a piece of fewer units with the beginning of the old content.
  Ref Shrink(Ref piece, std::uint32_t old_units, std::uint32_t new_units);
  void Release(Ref piece, std::uint32_t units) { PutFree(piece, IndexFor(units)); }

 private:
  static constexpr unsigned kSizes = 38;  // 1, 2, 3, 4, 6 ... 12, 15 ... 24, 28 ... 128 units
  static constexpr Ref kBegin = 4;        // so that no piece has offset 0

  unsigned IndexFor(std::uint32_t units) const { return index_by_units_[units - 1]; }
  Ref Load(Ref ref) const {
    Ref value = 0;
    std::memcpy(&value, At(ref), sizeof value);
    return value;
  }
  void Store(Ref ref, Ref value) { std::memcpy(At(ref), &value, sizeof value); }
  // A free piece holds the next one of its list in its first 4 bytes.
  Ref TakeFree(unsigned index) {
    const Ref piece = free_[index];
    free_[index] = Load(piece);
    return piece;
  }
  void PutFree(Ref piece, unsigned index) {
    Store(piece, free_[index]);
    free_[index] = piece;
  }
  void PutFreeUnits(Ref piece, std::uint32_t units);
  Ref AllocateRarely(unsigned index);
  void Glue();
  Ref LinkFreePieces();

  struct FreeMemory {
    void operator()(std::uint8_t* memory) const { std::free(memory); }
  };

  std::array<std::uint8_t, kSizes> units_by_index_{};
  std::array<std::uint8_t, kMaxPiece> index_by_units_{};
  std::array<Ref, kSizes> free_{};
  std::unique_ptr<std::uint8_t, FreeMemory> memory_;
  std::uint32_t size_ = 0;
  Ref text_ = 0;
  Ref units_start_ = 0;
  Ref lo_ = 0;
  Ref hi_ = 0;
  unsigned glue_countdown_ = 0;
};

}  // namespace companion::rar
