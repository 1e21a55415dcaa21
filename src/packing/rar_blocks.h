#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Headers of RAR packages as bytes. Both formats take the same description of an entry; what does
// not go with an ordinary stored file is there for packages in several volumes and for trying a
// reader out.
namespace packing {

enum class RarFormat { kRar5, kRar4 };

struct EntryHeader {
  std::string name;  // UTF-8; "/" separates
  bool is_folder = false;
  std::uint64_t packed_size = 0;  // of the data behind this header
  std::uint64_t size = 0;
  std::uint32_t crc = 0;
  std::int64_t modified = 0;               // seconds since 1970, UTC
  std::optional<std::uint32_t> unix_mode;  // with it the entry is one of a Unix host

  bool split_before = false;
  bool split_after = false;
  bool is_solid = false;
  bool is_encrypted = false;  // RAR 4
  unsigned method = 0;        // 0 stored
  unsigned version = 0;       // RAR 4: 20 when 0; RAR 5: the algorithm
  std::string extra;          // RAR 5: records of the extra area
  bool name_is_raw = false;   // RAR 4: the name's bytes as they are, without a Unicode form
};

// Signature and main header.
std::string MakeBeginning(RarFormat format, bool is_volume = false, bool is_first = true);
std::string MakeEntryHeader(RarFormat format, const EntryHeader& entry);
std::string MakeEnd(RarFormat format, bool more_volumes = false);

// The polynomial of zip, over bytes that come in pieces; begins with 0.
std::uint32_t UpdateCrc32(std::uint32_t crc, std::string_view bytes);

// RAR 5: 7 bits a byte, lowest first.
std::string MakeVint(std::uint64_t value);

}  // namespace packing
