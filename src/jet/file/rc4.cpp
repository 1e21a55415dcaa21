#include "jet/file/rc4.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>

namespace jet::file {

std::string ApplyRc4(std::string_view key, std::string_view bytes) {
  std::array<std::uint8_t, 256> state{};
  std::iota(state.begin(), state.end(), std::uint8_t{0});
  std::uint8_t j = 0;
  for (std::size_t i = 0; i < state.size(); ++i) {
    j = static_cast<std::uint8_t>(j + state[i] + static_cast<std::uint8_t>(key[i % key.size()]));
    std::swap(state[i], state[j]);
  }
  std::string result;
  result.reserve(bytes.size());
  std::uint8_t i = 0;
  j = 0;
  for (const char byte : bytes) {
    ++i;
    j = static_cast<std::uint8_t>(j + state[i]);
    std::swap(state[i], state[j]);
    const std::uint8_t stream = state[static_cast<std::uint8_t>(state[i] + state[j])];
    result.push_back(static_cast<char>(static_cast<std::uint8_t>(byte) ^ stream));
  }
  return result;
}

}  // namespace jet::file
