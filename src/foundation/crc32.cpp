#include "foundation/crc32.h"

#include <array>
#include <cstddef>

namespace tmw {
namespace {

constexpr std::array<std::array<std::uint32_t, 256>, 8> MakeCrcTables() {
  std::array<std::array<std::uint32_t, 256>, 8> tables{};
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t value = i;
    for (int bit = 0; bit < 8; ++bit)
      value = value >> 1U ^ ((value & 1U) != 0 ? 0xEDB88320U : 0U);
    tables[0][i] = value;
  }
  for (std::size_t t = 1; t < tables.size(); ++t) {
    for (std::size_t i = 0; i < 256; ++i) {
      tables[t][i] = tables[t - 1][i] >> 8U ^ tables[0][tables[t - 1][i] & 0xFFU];
    }
  }
  return tables;
}
constexpr auto kCrcTables = MakeCrcTables();

}  // namespace

std::uint32_t UpdateCrc32(std::uint32_t crc, std::string_view bytes) {
  crc = ~crc;
  const auto at = [&](std::size_t i) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i]));
  };
  std::size_t i = 0;
  for (; i + 8 <= bytes.size(); i += 8) {
    const std::uint32_t low = crc ^ (at(i) | at(i + 1) << 8U | at(i + 2) << 16U | at(i + 3) << 24U);
    crc = kCrcTables[7][low & 0xFFU] ^ kCrcTables[6][low >> 8U & 0xFFU] ^
          kCrcTables[5][low >> 16U & 0xFFU] ^ kCrcTables[4][low >> 24U] ^ kCrcTables[3][at(i + 4)] ^
          kCrcTables[2][at(i + 5)] ^ kCrcTables[1][at(i + 6)] ^ kCrcTables[0][at(i + 7)];
  }
  for (; i < bytes.size(); ++i)
    crc = crc >> 8U ^ kCrcTables[0][(crc ^ at(i)) & 0xFFU];
  return ~crc;
}

}  // namespace tmw
