#include <zlib.h>

#include <vector>

#include "companion/rar/block.h"
#include "companion/rar/field_cursor.h"
#include "companion/rar/limits.h"
#include "companion/rar/names.h"

// RAR 1.5 to 4: low half of the CRC32 of the rest of the header, type, flags, header size, fields;
// then the data, whose size is the first field if flag 0x8000 is set.
namespace companion::rar {
namespace {

enum BlockType : std::uint8_t { kMain = 0x73, kFile = 0x74, kNewService = 0x7A, kEnd = 0x7B };
enum BlockFlags : std::uint16_t { kHasData = 0x8000 };
enum MainFlagBits : std::uint16_t {
  kMainVolume = 1,
  kMainLocked = 4,
  kMainSolid = 8,
  kMainNewNames = 0x10,
  kMainRecovery = 0x40,
  kMainEncrypted = 0x80,
  kMainFirstVolume = 0x100,
};
enum FileFlagBits : std::uint16_t {
  kSplitBefore = 1,
  kSplitAfter = 2,
  kEncrypted = 4,
  kSolid = 0x10,
  kDirectory = 0xE0,  // all three bits; otherwise they give the dictionary's size
  kLarge = 0x100,
  kUnicode = 0x200,
};

constexpr std::size_t kPrefix = 7;  // up to the header size

std::uint32_t MainFlags(std::uint16_t stored) {
  std::uint32_t flags = 0;
  if ((stored & kMainVolume) != 0) flags |= ports::kRarArchiveVolume;
  if ((stored & kMainLocked) != 0) flags |= ports::kRarArchiveLocked;
  if ((stored & kMainSolid) != 0) flags |= ports::kRarArchiveSolid;
  if ((stored & kMainNewNames) != 0) flags |= ports::kRarArchiveNewNames;
  if ((stored & kMainRecovery) != 0) flags |= ports::kRarArchiveRecovery;
  if ((stored & kMainEncrypted) != 0) flags |= ports::kRarArchiveEncryptedHeaders;
  if ((stored & kMainFirstVolume) != 0) flags |= ports::kRarArchiveFirstVolume;
  return flags;
}

// Reads a file or service header; returns false if it is damaged.
bool ParseFile(std::uint16_t flags, FieldCursor fields, Block& block) {
  Entry& entry = block.entry;
  std::uint64_t packed = fields.Take<std::uint32_t>();
  std::uint64_t unpacked = fields.Take<std::uint32_t>();
  entry.host_os = fields.Take<std::uint8_t>();
  entry.crc = fields.Take<std::uint32_t>();
  entry.dos_time = fields.Take<std::uint32_t>();
  entry.version = fields.Take<std::uint8_t>();
  entry.method = fields.Take<std::uint8_t>() - 0x30U;
  const auto name_size = fields.Take<std::uint16_t>();
  entry.attributes = fields.Take<std::uint32_t>();
  if ((flags & kLarge) != 0) {
    packed |= static_cast<std::uint64_t>(fields.Take<std::uint32_t>()) << 32U;
    unpacked |= static_cast<std::uint64_t>(fields.Take<std::uint32_t>()) << 32U;
  }
  const bool from_unix = entry.host_os == 3;
  DecodedName name = DecodeRar4Name(fields.TakeText(name_size), (flags & kUnicode) != 0, from_unix);
  entry.name = std::move(name.text);
  entry.name_is_sound = name.sound;
  if (!fields.IsSound()) return false;
  block.data_size = packed;
  entry.packed_size = packed;
  entry.unpacked_size = unpacked;
  if ((flags & kLarge) == 0 && unpacked == 0xFFFFFFFFU) entry.unpacked_size.reset();
  entry.split_before = (flags & kSplitBefore) != 0;
  entry.split_after = (flags & kSplitAfter) != 0;
  entry.encrypted = (flags & kEncrypted) != 0;
  entry.solid = (flags & kSolid) != 0;
  entry.directory = (flags & kDirectory) == kDirectory ||
                    (entry.version < 20 && (entry.attributes & 0x10U) != 0 && !from_unix);
  entry.dictionary_kib = entry.directory ? 0 : 64U << (flags >> 5U & 7U);
  entry.modified = FromDosTime(entry.dos_time);
  const std::uint32_t type = entry.attributes & 0170000U;
  if (from_unix && type != 0 && type != 0100000U && type != 0040000U) entry.special = true;
  return true;
}

bool ParseHeader(std::uint8_t type, std::uint16_t flags, FieldCursor fields, Block& block) {
  switch (type) {
    case kMain:
      block.kind = BlockKind::kMain;
      block.archive_flags = MainFlags(flags);
      return true;
    case kFile:
      block.kind = BlockKind::kFile;
      return ParseFile(flags, fields, block);
    case kNewService:
      block.kind = BlockKind::kService;
      return ParseFile(flags, fields, block);
    case kEnd:
      block.kind = BlockKind::kEnd;
      block.more_volumes = (flags & 1U) != 0;
      return true;
    default:
      if ((flags & kHasData) != 0) block.data_size = fields.Take<std::uint32_t>();
      return fields.IsSound();
  }
}

class Rar4BlockReader final : public BlockReader {
 public:
  ports::RarResult Read(os::ReadableFile& file, std::uint64_t offset, Block& block) const override {
    std::array<std::uint8_t, kPrefix> prefix{};
    const auto got = file.ReadAt(offset, prefix.data(), prefix.size());
    if (!got) return ports::kRarReadFailed;
    if (*got == 0) return ports::kRarEndOfArchive;
    if (*got < prefix.size()) return ports::kRarReadFailed;
    FieldCursor cursor(prefix);
    const auto crc = cursor.Take<std::uint16_t>();
    const auto type = cursor.Take<std::uint8_t>();
    const auto flags = cursor.Take<std::uint16_t>();
    const auto size = cursor.Take<std::uint16_t>();
    if (size < kPrefix) return ports::kRarBadData;
    std::vector<std::uint8_t> bytes(size);
    const auto whole = file.ReadAt(offset, bytes.data(), bytes.size());
    if (!whole || *whole < bytes.size()) return ports::kRarReadFailed;
#ifndef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
    if ((crc32_z(0, bytes.data() + 2, bytes.size() - 2) & 0xFFFFU) != crc)
      return ports::kRarBadData;
#else
    (void)crc;
#endif
    block = Block();
    block.data_offset = offset + size;
    if (!ParseHeader(type, flags, FieldCursor(std::span(bytes).subspan(kPrefix)), block)) {
      return ports::kRarBadData;
    }
    return block.data_size > kMaxPackedSize ? ports::kRarReadFailed : ports::kRarOk;
  }

  std::uint64_t FirstOffset() const override {
    return 7;
  }
  bool IsRar5() const override {
    return false;
  }
};

}  // namespace

std::unique_ptr<BlockReader> MakeRar4BlockReader() {
  return std::make_unique<Rar4BlockReader>();
}

}  // namespace companion::rar
