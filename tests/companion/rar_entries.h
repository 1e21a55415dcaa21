#pragma once

#include <algorithm>
#include <string>

#include "packing/rar_blocks.h"

// Blocks that our own writer never makes, for trying a reader out: entries of other methods and
// hosts, damaged or hostile ones, archives in several volumes.
namespace tests {

using packing::MakeVint;
using packing::RarFormat;

struct EntryHeader : packing::EntryHeader {  // unix_mode: with the bits of the file's kind
  std::uint64_t packed_size = 0;             // of the data after this header
  bool split_before = false;
  bool split_after = false;
  bool is_solid = false;
  bool is_encrypted = false;  // RAR 4
  unsigned method = 0;        // 0 stored
  unsigned version = 0;       // RAR 4: 20 when 0; RAR 5: the algorithm
  std::string extra;          // RAR 5: records of the extra area
  bool name_is_raw = false;   // RAR 4: the name's bytes as they are, without a Unicode form
};

inline EntryHeader FileHeader(const std::string& name, const std::string& content) {
  EntryHeader header;
  header.name = name;
  header.packed_size = content.size();
  header.size = content.size();
  header.crc = packing::UpdateCrc32(0, content);
  header.modified = 1700000000;
  return header;
}

// Little-endian.
inline std::string Number(std::uint64_t value, std::size_t length) {
  std::string bytes;
  for (std::size_t i = 0; i < length; ++i)
    bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
  return bytes;
}

// The sound header with the differences patched in.
inline std::string MakeRar4Entry(const EntryHeader& entry) {
  const std::string sound = packing::MakeEntryHeader(RarFormat::kRar4, entry);
  auto flags = static_cast<std::uint8_t>(sound[3]);
  auto high_flags = static_cast<std::uint8_t>(sound[4]);
  std::string fields = sound.substr(7);
  if (entry.name_is_raw) {
    fields = fields.substr(0, 25) + entry.name;
    fields.replace(19, 2, Number(entry.name.size(), 2));
    high_flags &= 0xFDU;
  }
  fields.replace(0, 4, Number(entry.packed_size, 4));
  if (entry.version != 0) fields.replace(17, 1, Number(entry.version, 1));
  fields.replace(18, 1, Number(0x30 + entry.method, 1));
  if (entry.unix_mode) fields.replace(21, 4, Number(*entry.unix_mode, 4));
  if (entry.size >> 32U != 0) {
    fields.insert(25, Number(entry.packed_size >> 32U, 4) + Number(entry.size >> 32U, 4));
    high_flags |= 1U;
  }
  flags |= (entry.split_before ? 1U : 0U) | (entry.split_after ? 2U : 0U) |
           (entry.is_encrypted ? 4U : 0U) | (entry.is_solid ? 0x10U : 0U);
  const unsigned all_flags = flags | static_cast<unsigned>(high_flags) << 8U;
  return packing::MakeRar4Block(0x74, static_cast<std::uint16_t>(all_flags), fields);
}

inline std::string MakeRar5Entry(const EntryHeader& entry) {
  const unsigned windows_attributes = entry.is_folder ? 0x10 : 0x20;
  std::string fields = MakeVint(entry.is_folder ? 3 : 6) + MakeVint(entry.size) +
                       MakeVint(entry.unix_mode.value_or(windows_attributes)) +
                       Number(static_cast<std::uint64_t>(entry.modified), 4);
  if (!entry.is_folder) fields += Number(entry.crc, 4);
  fields += MakeVint(entry.version | (entry.is_solid ? 0x40U : 0U) | entry.method << 7U) +
            MakeVint(entry.unix_mode ? 1 : 0) + MakeVint(entry.name.size()) + entry.name;
  const unsigned flags = (entry.split_before ? 8U : 0U) | (entry.split_after ? 16U : 0U);
  return packing::MakeRar5Block(2, flags, fields, entry.extra, entry.packed_size);
}

inline std::string MakeEntryHeader(RarFormat format, const EntryHeader& entry) {
  return format == RarFormat::kRar5 ? MakeRar5Entry(entry) : MakeRar4Entry(entry);
}

inline std::string MakeVolumeBeginning(RarFormat format, bool is_first) {
  const std::string signature = MakeBeginning(format).substr(0, format == RarFormat::kRar5 ? 8 : 7);
  if (format == RarFormat::kRar4)
    return signature + packing::MakeRar4Block(0x73, is_first ? 0x111 : 0x11, std::string(6, 0));
  // Every volume but the first carries its number.
  return signature +
         packing::MakeRar5Block(1, 0, is_first ? MakeVint(1) : MakeVint(3) + MakeVint(1));
}

inline std::string MakeVolumeEnd(RarFormat format, bool is_last) {
  if (is_last) return MakeEnd(format);
  return format == RarFormat::kRar5 ? packing::MakeRar5Block(5, 4, MakeVint(1))
                                    : packing::MakeRar4Block(0x7B, 0x4001, "");
}

// An archive of one entry.
inline std::string Archive(RarFormat format, const EntryHeader& header,
                           const std::string& content) {
  return MakeBeginning(format) + MakeEntryHeader(format, header) + content + MakeEnd(format);
}

}  // namespace tests
