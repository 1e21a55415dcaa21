#include "companion/rar/filters.h"

#include <array>
#include <cstdlib>

#include "companion/rar/failure.h"

namespace companion::rar {
namespace {

std::uint32_t LoadLe32(const std::uint8_t* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8U |
         static_cast<std::uint32_t>(bytes[2]) << 16U | static_cast<std::uint32_t>(bytes[3]) << 24U;
}

void StoreLe32(std::uint8_t* bytes, std::uint32_t value) {
  for (unsigned i = 0; i < 4; ++i)
    bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

// Walks through the bytes of one channel after the other; `next(byte)` returns the byte to store.
template <typename Next>
void UnpackChannel(std::span<const std::uint8_t> packed, std::size_t& taken, std::uint32_t channel,
                   std::uint32_t channels, std::span<std::uint8_t> out, Next next) {
  for (std::size_t i = channel; i < out.size(); i += channels)
    out[i] = next(packed[taken++]);
}

void UndoDelta(std::uint32_t channels, std::span<const std::uint8_t> packed,
               std::span<std::uint8_t> out) {
  std::size_t taken = 0;
  for (std::uint32_t channel = 0; channel < channels && channel < out.size(); ++channel) {
    std::uint8_t previous = 0;
    UnpackChannel(packed, taken, channel, channels, out, [&](std::uint8_t byte) {
      previous = static_cast<std::uint8_t>(previous - byte);
      return previous;
    });
  }
}

void UndoX86(bool with_jumps, bool position_wraps, std::uint64_t position,
             std::span<std::uint8_t> block) {
  constexpr std::uint32_t kFileSize = 0x1000000;
  constexpr std::uint32_t kSign = 0x80000000;
  for (std::size_t i = 0; i + 5 <= block.size();) {
    const std::uint8_t opcode = block[i++];
    if (opcode != 0xE8 && !(with_jumps && opcode == 0xE9)) continue;
    auto here = static_cast<std::uint32_t>(position + i);
    if (position_wraps) here %= kFileSize;
    const std::uint32_t target = LoadLe32(&block[i]);
    if ((target & kSign) != 0) {
      if (((target + here) & kSign) == 0) StoreLe32(&block[i], target + kFileSize);
    } else if (target < kFileSize) {
      StoreLe32(&block[i], target - here);
    }
    i += 4;
  }
}

void UndoArm(std::uint64_t position, std::span<std::uint8_t> block) {
  for (std::size_t i = 0; i + 4 <= block.size(); i += 4) {
    if (block[i + 3] != 0xEB) continue;
    const std::uint32_t target =
        LoadLe32(&block[i]) - static_cast<std::uint32_t>((position + i) / 4);
    StoreLe32(&block[i], (target & 0x00FFFFFFU) | 0xEB000000U);
  }
}

// Bundles of 16 bytes: 5 bits of template, three slots of 41 bits. A branch relative to the bundle
// has opcode 5 in the top 4 bits of its slot and 20 bits of displacement, in bundles, at bit 13.
void UndoItaniumBundle(std::uint32_t bundle_number, std::span<std::uint8_t, 16> bundle) {
  // Which slots of a template go to the branch unit, from template 0x10 on.
  static constexpr std::array<std::uint8_t, 16> kBranchSlots = {4, 4, 6, 6, 0, 0, 7, 7,
                                                                4, 4, 0, 0, 4, 4, 0, 0};
  const unsigned code = bundle[0] & 0x1FU;
  if (code < 0x10) return;
  for (unsigned slot = 0; slot < 3; ++slot) {
    if (((kBranchSlots[code - 0x10] >> slot) & 1U) == 0) continue;
    const unsigned first_bit = 5 + slot * 41;
    const unsigned opcode_bit = first_bit + 37;
    // The four bits never cross a byte border.
    const unsigned opcode =
        (static_cast<unsigned>(bundle[opcode_bit / 8]) >> (opcode_bit % 8)) & 0xFU;
    if (opcode != 5) continue;
    const unsigned target_bit = first_bit + 13;
    std::uint8_t* const word = &bundle[target_bit / 8];
    const unsigned shift = target_bit % 8;
    const std::uint32_t stored = LoadLe32(word);
    const std::uint32_t target = ((stored >> shift) - bundle_number) & 0xFFFFFU;
    StoreLe32(word, (stored & ~(0xFFFFFU << shift)) | target << shift);
  }
}

void UndoItanium(std::uint64_t position, std::span<std::uint8_t> block) {
  auto bundle_number = static_cast<std::uint32_t>(position) >> 4U;
  for (std::size_t i = 0; i + 21 < block.size(); i += 16) {
    UndoItaniumBundle(bundle_number++, block.subspan(i).first<16>());
  }
}

// Of left, above and corner (left above), the one that is nearest to left + above - corner.
std::uint8_t NearestNeighbour(int left, int above, int left_above) {
  const int to_left = std::abs(above - left_above);
  const int to_above = std::abs(left - left_above);
  const int to_corner = std::abs(left + above - 2 * left_above);
  if (to_left <= to_above && to_left <= to_corner) return static_cast<std::uint8_t>(left);
  return static_cast<std::uint8_t>(to_above <= to_corner ? above : left_above);
}

void UndoRgb(const FilterRequest& request, std::span<const std::uint8_t> packed,
             std::span<std::uint8_t> out) {
  std::size_t taken = 0;
  for (std::size_t colour = 0; colour < 3; ++colour) {
    std::uint8_t previous = 0;
    for (std::size_t i = colour; i < out.size(); i += 3) {
      std::uint8_t predicted = previous;
      if (i >= request.stride) {
        const std::size_t corner = i - request.stride;
        predicted = NearestNeighbour(previous, out[corner + 3], out[corner]);
      }
      previous = static_cast<std::uint8_t>(predicted - packed[taken++]);
      out[i] = previous;
    }
  }
  for (std::size_t i = request.red_offset; i + 2 < out.size(); i += 3) {
    const std::uint8_t green = out[i + 1];
    out[i] = static_cast<std::uint8_t>(out[i] + green);
    out[i + 2] = static_cast<std::uint8_t>(out[i + 2] + green);
  }
}

int Signed(std::uint8_t byte) {
  return byte < 128 ? byte : byte - 256;
}

// One channel of the audio filter: predicts a sample from the last one and three differences, with
// weights that follow the errors of the last 32 samples.
class AudioChannel {
 public:
  std::uint8_t Next(std::uint8_t packed) {
    differences_[2] = differences_[1];
    differences_[1] = last_difference_ - differences_[0];
    differences_[0] = last_difference_;
    int predicted = 8 * last_;
    for (std::size_t i = 0; i < 3; ++i)
      predicted += weights_[i] * differences_[i];
    const int error = Signed(packed);
    const auto sample = static_cast<std::uint8_t>((predicted >> 3) - error);
    Account(error * 8);
    last_difference_ = Signed(static_cast<std::uint8_t>(sample - last_));
    last_ = sample;
    if ((count_++ & 0x1FU) == 0) Adapt();
    return sample;
  }

 private:
  void Account(int error) {
    errors_[0] += static_cast<unsigned>(std::abs(error));
    for (std::size_t i = 0; i < 3; ++i) {
      errors_[2 * i + 1] += static_cast<unsigned>(std::abs(error - differences_[i]));
      errors_[2 * i + 2] += static_cast<unsigned>(std::abs(error + differences_[i]));
    }
  }

  // Changes the weight that would have reduced the error most.
  void Adapt() {
    std::size_t best = 0;
    for (std::size_t i = 1; i < errors_.size(); ++i) {
      if (errors_[i] < errors_[best]) best = i;
    }
    errors_.fill(0);
    if (best == 0) return;
    int& weight = weights_[(best - 1) / 2];
    if (best % 2 == 1) {
      if (weight >= -16) --weight;
    } else if (weight < 16) {
      ++weight;
    }
  }

  std::array<int, 3> differences_{};
  std::array<int, 3> weights_{};
  std::array<unsigned, 7> errors_{};
  int last_difference_ = 0;
  int last_ = 0;
  unsigned count_ = 0;
};

void UndoAudio(std::uint32_t channels, std::span<const std::uint8_t> packed,
               std::span<std::uint8_t> out) {
  std::size_t taken = 0;
  for (std::uint32_t channel = 0; channel < channels && channel < out.size(); ++channel) {
    AudioChannel state;
    UnpackChannel(packed, taken, channel, channels, out,
                  [&](std::uint8_t byte) { return state.Next(byte); });
  }
}

// For filters that move every byte.
template <typename Undo>
void UndoInto(std::vector<std::uint8_t>& block, std::vector<std::uint8_t>& scratch, Undo undo) {
  scratch.resize(block.size());
  undo(std::span<const std::uint8_t>(block), std::span<std::uint8_t>(scratch));
  block.swap(scratch);
}

}  // namespace

void UndoFilter(const FilterRequest& request, std::uint64_t position,
                std::vector<std::uint8_t>& block, std::vector<std::uint8_t>& scratch) {
  switch (request.kind) {
    case FilterKind::kDelta:
      if (request.channels == 0) throw Failure{ports::kRarBadData};
      UndoInto(block, scratch,
               [&](auto packed, auto out) { UndoDelta(request.channels, packed, out); });
      break;
    case FilterKind::kX86Call:
    case FilterKind::kX86Jump:
      UndoX86(request.kind == FilterKind::kX86Jump, request.position_wraps, position, block);
      break;
    case FilterKind::kArm:
      UndoArm(position, block);
      break;
    case FilterKind::kItanium:
      UndoItanium(position, block);
      break;
    case FilterKind::kRgb:
      if (request.stride <= 3 || request.red_offset > 2) throw Failure{ports::kRarBadData};
      UndoInto(block, scratch, [&](auto packed, auto out) { UndoRgb(request, packed, out); });
      break;
    case FilterKind::kAudio:
      if (request.channels == 0) throw Failure{ports::kRarBadData};
      UndoInto(block, scratch,
               [&](auto packed, auto out) { UndoAudio(request.channels, packed, out); });
      break;
  }
}

}  // namespace companion::rar
