#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

// The only place that knows the order of bytes in a number. The caller answers for the room.
namespace jet::file {

template <typename T>
using BitsOf = std::conditional_t<
    sizeof(T) == 8, std::uint64_t,
    std::conditional_t<sizeof(T) == 4, std::uint32_t,
                       std::conditional_t<sizeof(T) == 2, std::uint16_t, std::uint8_t>>>;

template <typename T>
T LoadLittle(const char* from) {
  BitsOf<T> bits = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&bits, from, sizeof(T));
  } else {
    for (std::size_t i = sizeof(T); i-- > 0;)
      bits =
          static_cast<BitsOf<T>>((std::uint64_t{bits} << 8U) | static_cast<unsigned char>(from[i]));
  }
  return std::bit_cast<T>(bits);
}

template <typename T>
void StoreLittle(char* to, T value) {
  auto bits = std::uint64_t{std::bit_cast<BitsOf<T>>(value)};
  for (std::size_t i = 0; i < sizeof(T); ++i, bits >>= 8U)
    to[i] = static_cast<char>(bits & 0xFFU);
}

template <typename T>
void AppendLittle(std::string& to, T value) {
  const std::size_t end = to.size();
  to.resize(end + sizeof(T));
  StoreLittle(to.data() + end, value);
}

template <typename T>
T LoadBig(const char* from) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i)
    bits = (bits << 8U) | static_cast<unsigned char>(from[i]);
  return std::bit_cast<T>(static_cast<BitsOf<T>>(bits));
}

template <typename T>
void AppendBig(std::string& to, T value) {
  const auto bits = std::uint64_t{std::bit_cast<BitsOf<T>>(value)};
  for (std::size_t i = sizeof(T); i-- > 0;)
    to.push_back(static_cast<char>((bits >> (8U * i)) & 0xFFU));
}

}  // namespace jet::file
