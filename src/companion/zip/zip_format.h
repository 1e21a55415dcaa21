#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "companion/os.h"

// Records of a zip file (APPNOTE 6.3), with Zip64 where a number needs it.
namespace companion::zip {

inline constexpr std::uint16_t kFlagUtf8 = 0x800;
inline constexpr std::uint16_t kMethodStored = 0;
inline constexpr std::uint16_t kMethodDeflated = 8;

struct ZipEntry {
  std::string name;  // bytes as stored; a folder's name ends with "/"
  std::uint16_t made_by = 0;
  std::uint16_t flags = 0;
  std::uint16_t method = kMethodStored;
  std::uint32_t dos_time = 0;
  std::uint32_t crc = 0;
  std::uint64_t packed_size = 0;
  std::uint64_t size = 0;
  std::uint32_t external_attributes = 0;
  std::uint64_t offset = 0;      // of the local header
  std::string extra;             // without the Zip64 field
  bool has_local_zip64 = false;  // the local header has room for 64-bit sizes
};

struct ZipDirectory {
  std::vector<ZipEntry> entries;
  std::string comment;
};

// Extra field with the time in seconds, UTC.
std::string MakeTimeExtra(std::int64_t modified);

std::string MakeLocalHeader(const ZipEntry& entry);
// Central directory and end records for a directory that begins at that offset.
std::string MakeDirectory(const ZipDirectory& directory, std::uint64_t offset);

// Compares the file at that offset with the bytes. Throws Failure kZipBadStructure, kZipReadFailed.
void CheckBytes(os::ReadableFile& file, std::uint64_t offset, const std::string& bytes);

// Compares an entry's local header, unpacks the content, stored or deflated, without storing it and
// compares length and CRC. Throws the same.
void CheckEntry(os::ReadableFile& file, const ZipEntry& entry);

}  // namespace companion::zip
