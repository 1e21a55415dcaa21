#include "companion/rar/rar3_filters.h"

#include <zlib.h>

#include <algorithm>
#include <array>

#include "companion/rar/failure.h"

namespace companion::rar {
namespace {

enum DeclarationFlags : std::uint8_t {
  kHasData = 0x08,
  kHasRegisters = 0x10,
  kHasLength = 0x20,
  kStartsLater = 0x40,
  kNamesProgram = 0x80,
};

constexpr std::size_t kMaxPrograms = 1024;
constexpr std::uint32_t kMaxProgramLength = 0x10000;
constexpr std::uint32_t kMaxDataLength = 0x2000 - 0x40;
// The virtual machine's memory for a block; a filter that does not work in place needs it twice.
constexpr std::uint32_t kWorkSize = 0x3C000;

struct KnownProgram {
  std::uint32_t length;
  std::uint32_t crc;
  FilterKind kind;
};
constexpr std::array kKnownPrograms = {
    KnownProgram{29, 0x0E06077D, FilterKind::kDelta},
    KnownProgram{53, 0xAD576887, FilterKind::kX86Call},
    KnownProgram{57, 0x3CD7E57E, FilterKind::kX86Jump},
    KnownProgram{120, 0x3769893F, FilterKind::kItanium},
    KnownProgram{149, 0x1C2C5DC8, FilterKind::kRgb},
    KnownProgram{216, 0xBC85E701, FilterKind::kAudio},
};

bool IsDoneInPlace(FilterKind kind) {
  return kind == FilterKind::kX86Call || kind == FilterKind::kX86Jump ||
         kind == FilterKind::kItanium;
}

}  // namespace

// The declaration as bits. After its end zeros are read, and IsSound returns false.
class Rar3Filters::Bits {
 public:
  explicit Bits(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::uint32_t Take(unsigned count) {
    std::uint32_t value = 0;
    for (; count > 0; --count, ++bit_) {
      const std::size_t byte = bit_ / 8;
      const unsigned bit = byte < bytes_.size() ? (bytes_[byte] >> (7 - bit_ % 8)) & 1U : 0U;
      value = value << 1U | bit;
    }
    return value;
  }

  // Two bits of kind, then 4, 8, 16 or 32 bits; a small value of 8 bits is the beginning of a
  // negative one of 12 bits.
  std::uint32_t TakeNumber() {
    switch (Take(2)) {
      case 0:
        return Take(4);
      case 1: {
        const std::uint32_t value = Take(8);
        return value >= 16 ? value : 0xFFFFFF00U | value << 4U | Take(4);
      }
      case 2:
        return Take(16);
      default:
        return Take(32);
    }
  }

  bool IsSound() const { return bit_ <= bytes_.size() * 8; }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t bit_ = 0;
};

std::size_t Rar3Filters::SelectProgram(bool is_named, Bits& bits, FilterPipeline& pipeline) {
  if (!is_named) return last_program_;
  const std::uint32_t number = bits.TakeNumber();
  if (number == 0) {
    Reset();
    pipeline.ForgetAnnounced();
    return 0;
  }
  return number - 1;
}

// The first byte of a program is the exclusive or of the others.
FilterKind Rar3Filters::ReadProgram(Bits& bits) {
  const std::uint32_t length = bits.TakeNumber();
  if (length == 0 || length > kMaxProgramLength) throw Failure{ports::kRarBadData};
  std::vector<std::uint8_t> program(length);
  std::uint8_t check = 0;
  for (std::uint8_t& byte : program) {
    byte = static_cast<std::uint8_t>(bits.Take(8));
    check ^= byte;
  }
  if (!bits.IsSound() || check != 0) throw Failure{ports::kRarBadData};
  const auto crc = static_cast<std::uint32_t>(crc32_z(0, program.data(), program.size()));
  const auto* const known = std::find_if(
      kKnownPrograms.begin(), kKnownPrograms.end(),
      [&](const KnownProgram& each) { return each.length == length && each.crc == crc; });
  if (known == kKnownPrograms.end()) throw Failure{ports::kRarUnknownFormat};
  return known->kind;
}

void Rar3Filters::Declare(std::uint8_t flags, std::span<const std::uint8_t> declaration,
                          std::uint64_t position, FilterPipeline& pipeline) {
  Bits bits(declaration);
  const std::size_t number = SelectProgram((flags & kNamesProgram) != 0, bits, pipeline);
  if (number > programs_.size() || number >= kMaxPrograms) throw Failure{ports::kRarBadData};
  last_program_ = number;
  const bool is_new = number == programs_.size();

  std::uint64_t start = position + bits.TakeNumber();
  if ((flags & kStartsLater) != 0) start += 258;
  std::uint32_t length = is_new ? 0 : programs_[number].block_length;
  if ((flags & kHasLength) != 0) length = bits.TakeNumber();

  // Registers 0 and 1 are the parameters of the known programs, 4 is the length of the block.
  std::array<std::uint32_t, 7> registers{};
  registers[4] = length;
  if ((flags & kHasRegisters) != 0) {
    const std::uint32_t given = bits.Take(7);
    for (unsigned i = 0; i < registers.size(); ++i) {
      if (((given >> i) & 1U) != 0) registers[i] = bits.TakeNumber();
    }
  }
  if (is_new) programs_.push_back({ReadProgram(bits), 0});
  Program& program = programs_[number];
  program.block_length = length;
  if ((flags & kHasData) != 0) {
    const std::uint32_t data = bits.TakeNumber();
    if (data > kMaxDataLength) throw Failure{ports::kRarBadData};
    for (std::uint32_t i = 0; i < data; ++i)
      bits.Take(8);
  }
  if (!bits.IsSound() || registers[4] != length) throw Failure{ports::kRarBadData};
  if (length > (IsDoneInPlace(program.kind) ? kWorkSize : kWorkSize / 2))
    throw Failure{ports::kRarBadData};

  FilterRequest request;
  request.kind = program.kind;
  request.channels = registers[0];
  request.stride = registers[0];
  request.red_offset = registers[1];
  pipeline.Announce(start, length, request);
}

}  // namespace companion::rar
