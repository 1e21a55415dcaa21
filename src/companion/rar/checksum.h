#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "companion/rar/blake2sp.h"
#include "companion/rar/block.h"

namespace companion::rar {

// Computes the checksums that an entry declares while its content arrives.
class Checksum {
 public:
  explicit Checksum(const Entry& entry);
  void Update(const std::uint8_t* data, std::size_t length);
  // Returns whether the content matches the entry's checksums; true if it has none.
  bool Matches(const Entry& entry);

 private:
  std::uint32_t crc_ = 0;
  std::optional<Blake2sp> blake2sp_;
};

}  // namespace companion::rar
