#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tmw {

// What a zip file's directory says of an entry.
struct ZipListing {
  std::string Name;  // bytes as stored
  std::uint64_t Length = 0;
  std::uint32_t Crc = 0;
  std::uint32_t Method = 0;  // 0: stored, 8: deflated
  std::uint64_t PackedLength = 0;
  std::uint64_t Offset = 0;  // of its local header
};

// The entries of a zip file (APPNOTE 6.3, without Zip64: those are no backups of ours). Nothing if
// the file cannot be read or its directory does not add up.
std::optional<std::vector<ZipListing>> TryListZip(const std::string& file);

}  // namespace tmw
