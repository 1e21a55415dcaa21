#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "companion/rar/blake2sp.h"
#include "companion/rar/block.h"

namespace companion::rar {

// The checksums that an entry declares, over the content as it comes.
class Checksum {
 public:
  explicit Checksum(const Entry& entry);
  void Update(const std::uint8_t* data, std::size_t length);
  // Whether the content is the one that the entry declares; true where it declares nothing.
  bool Matches(const Entry& entry);

 private:
  std::uint32_t crc_ = 0;
  std::optional<Blake2sp> blake2sp_;
};

}  // namespace companion::rar
