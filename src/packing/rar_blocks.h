#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/crc32.h"

// The headers of RAR packages as bytes: a single volume, entries stored without compression.
namespace packing {

enum class RarFormat { kRar5, kRar4 };

struct EntryHeader {
  std::string name;  // UTF-8; "/" separates
  bool is_folder = false;
  std::uint64_t size = 0;  // of the data, which follows the header
  std::uint32_t crc = 0;
  std::int64_t modified = 0;               // seconds since 1970, UTC
  std::optional<std::uint32_t> unix_mode;  // the nine permission bits; absent in a Windows entry
};

// Signature and main header.
std::string MakeBeginning(RarFormat format);
std::string MakeEntryHeader(RarFormat format, const EntryHeader& entry);
std::string MakeEnd(RarFormat format);

using tmw::UpdateCrc32;

// A block of RAR 4: CRC, type, flags, size of the whole header, fields.
std::string MakeRar4Block(std::uint8_t type, std::uint16_t flags, const std::string& fields);

// A block of RAR 5: CRC, size, type, flags, [size of the extra area], [size of the data], fields,
// extra area. The flags for the two optional sizes are set here.
std::string MakeRar5Block(unsigned type, unsigned flags, const std::string& fields,
                          const std::string& extra = {},
                          std::optional<std::uint64_t> data_size = {});

// A variable-length number of RAR 5: 7 bits per byte, lowest first.
std::string MakeVint(std::uint64_t value);

}  // namespace packing
