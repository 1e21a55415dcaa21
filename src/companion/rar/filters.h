#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// The transformations that are undone after decompression. RAR 5 identifies them by number, RAR 3
// by the program that describes them.
namespace companion::rar {

enum class FilterKind {
  kDelta,    // differences between neighbours of one channel, channel after channel
  kX86Call,  // absolute targets of E8
  kX86Jump,  // absolute targets of E8 and E9
  kArm,      // absolute targets of BL, 32-bit ARM
  kItanium,  // absolute targets of IP-relative branches
  kRgb,      // picture of 24-bit pixels
  kAudio,    // samples of one byte, channel after channel
};

struct FilterRequest {
  FilterKind kind = FilterKind::kDelta;
  std::uint32_t channels = 0;    // kDelta, kAudio
  std::uint32_t stride = 0;      // kRgb: bytes of a row, and three
  std::uint32_t red_offset = 0;  // kRgb: where the first pixel's colours begin, 0 to 2
  bool position_wraps = false;   // kX86...: positions count within 16 MiB (RAR 5)
};

// Undoes one filter in place. `position` is the block's offset in the entry. `scratch` is the
// caller's memory for filters that cannot work in place. Throws Failure for parameters that no
// sound archive has.
void UndoFilter(const FilterRequest& request, std::uint64_t position,
                std::vector<std::uint8_t>& block, std::vector<std::uint8_t>& scratch);

}  // namespace companion::rar
