#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "companion/os.h"
#include "ports/companion_abi.h"

namespace companion::rar {

// One file or folder of an archive, the same for both formats.
struct Entry {
  std::string name;           // decoded, UTF-8; RAR 4 separates with "\", RAR 5 with "/"
  bool name_is_sound = true;  // false if malformed or with a zero character
  bool split_before = false;  // continues from the previous volume
  bool split_after = false;   // continues in the next volume
  bool encrypted = false;
  bool solid = false;  // decoded with the window of the previous entry
  bool directory = false;
  bool special = false;                        // a link, a pipe, a device
  std::uint64_t packed_size = 0;               // in this volume
  std::optional<std::uint64_t> unpacked_size;  // of the whole entry; absent if unknown
  std::optional<std::uint32_t> crc;            // CRC32 of the content
  std::optional<std::array<std::uint8_t, 32>> blake2sp;
  std::uint32_t host_os = 0;             // 2 Windows, 3 Unix, as in the header record
  std::uint32_t dos_time = 0;            // local time
  std::optional<std::int64_t> modified;  // seconds since 1970, UTC
  std::uint32_t version = 0;     // needed to unpack: 15 to 36; 50 for RAR 5, 70 for its successor
  std::uint32_t method = 0;      // 0 stored to 5 best
  std::uint32_t attributes = 0;  // by host_os
  std::uint32_t dictionary_kib = 0;
  std::uint32_t redirection = 0;  // kind of the link, RAR 5
  std::string redirection_target;
};

enum class BlockKind { kMain, kFile, kService, kEnd, kEncryption, kOther };

// One block of an archive file: a header, which its data follows.
struct Block {
  BlockKind kind = BlockKind::kOther;
  std::uint64_t data_offset = 0;
  std::uint64_t data_size = 0;
  std::uint32_t archive_flags = 0;  // kMain: RarArchiveFlags
  bool more_volumes = false;        // kEnd
  Entry entry;                      // kFile

  std::uint64_t NextOffset() const { return data_offset + data_size; }
};

// Reads blocks of one of the two formats.
class BlockReader {
 public:
  virtual ~BlockReader() = default;

  // Returns kRarOk or why there is no block: kRarEndOfArchive at the end of the file, kRarBadData
  // for a damaged header, kRarReadFailed for a failed read (and RAR 4 headers that are cut off).
  virtual ports::RarResult Read(os::ReadableFile& file, std::uint64_t offset,
                                Block& block) const = 0;
  virtual std::uint64_t FirstOffset() const = 0;  // length of the signature
  virtual bool IsRar5() const = 0;
};

std::unique_ptr<BlockReader> MakeRar4BlockReader();
std::unique_ptr<BlockReader> MakeRar5BlockReader();

// Chooses the format by the signature at the beginning of the file; returns null if it is neither.
std::unique_ptr<BlockReader> RecogniseFormat(os::ReadableFile& file);

// The DOS form of a time, local; 0 if it cannot express the time.
std::uint32_t ToDosTime(std::int64_t seconds);
std::int64_t FromDosTime(std::uint32_t dos_time);

}  // namespace companion::rar
