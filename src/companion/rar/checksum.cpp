#include "companion/rar/checksum.h"

#include <zlib.h>

namespace companion::rar {

Checksum::Checksum(const Entry& entry) {
  if (entry.blake2sp) blake2sp_.emplace();
}

void Checksum::Update(const std::uint8_t* data, std::size_t length) {
  crc_ = static_cast<std::uint32_t>(crc32_z(crc_, data, length));
  if (blake2sp_) blake2sp_->Update(data, length);
}

bool Checksum::Matches(const Entry& entry) {
  if (entry.crc && *entry.crc != crc_) return false;
  if (!entry.blake2sp) return true;
  return blake2sp_ && blake2sp_->Finish() == *entry.blake2sp;
}

}  // namespace companion::rar
