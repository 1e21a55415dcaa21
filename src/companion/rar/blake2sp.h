#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace companion::rar {

// One node of the tree: BLAKE2s with a digest of 32 bytes, without a key (RFC 7693).
class Blake2s {
 public:
  // The node's place in the tree: leaves have depth 0.
  Blake2s(std::uint32_t node, std::uint8_t depth, bool last_of_level);
  void Update(const std::uint8_t* data, std::size_t length);
  std::array<std::uint8_t, 32> Finish();

 private:
  void Compress(bool last);

  std::array<std::uint32_t, 8> state_;
  std::array<std::uint8_t, 64> block_{};
  std::size_t length_ = 0;
  std::uint64_t total_ = 0;
  bool last_of_level_;
};

// BLAKE2sp: eight leaves hash the message's 64-byte blocks in turn, and a root hashes their
// digests.
class Blake2sp {
 public:
  Blake2sp();
  void Update(const std::uint8_t* data, std::size_t length);
  std::array<std::uint8_t, 32> Finish();

 private:
  std::array<Blake2s, 8> leaves_;
  std::uint64_t total_ = 0;
};

}  // namespace companion::rar
