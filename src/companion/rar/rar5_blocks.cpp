#include <zlib.h>

#include <vector>

#include "companion/rar/block.h"
#include "companion/rar/field_cursor.h"
#include "companion/rar/limits.h"
#include "companion/rar/names.h"

// RAR 5: CRC32 of the rest of the header, header size, type, flags, [extra size], [data size],
// fields, extra area; then the data. Unknown bytes after the known fields are valid.
namespace companion::rar {
namespace {

enum BlockFlags : std::uint64_t { kHasExtra = 1, kHasData = 2, kSplitBefore = 8, kSplitAfter = 16 };
enum FileFlags : std::uint64_t { kDirectory = 1, kHasTime = 2, kHasCrc = 4, kSizeUnknown = 8 };
enum ExtraType : std::uint64_t {
  kEncryption = 1,
  kHash = 2,
  kTimes = 3,
  kVersion = 4,
  kRedirection = 5
};

void ParseTimes(FieldCursor& record, Entry& entry) {
  const std::uint64_t flags = record.TakeVint();
  constexpr std::uint64_t kIsUnix = 1;
  constexpr std::uint64_t kHasModified = 2;
  if ((flags & kHasModified) == 0) return;
  std::int64_t seconds = 0;
  if ((flags & kIsUnix) != 0) {
    seconds = record.Take<std::uint32_t>();
  } else {
    constexpr std::int64_t kUnixEpoch = 11644473600;
    seconds = static_cast<std::int64_t>(record.Take<std::uint64_t>() / 10000000) - kUnixEpoch;
  }
  if (record.IsSound()) entry.modified = seconds;
}

void ParseRedirection(FieldCursor& record, Entry& entry) {
  entry.redirection = static_cast<std::uint32_t>(record.TakeVint());
  record.TakeVint();
  const std::uint64_t length = record.TakeVint();
  entry.redirection_target = DecodeRar5Name(record.TakeText(length)).text;
  entry.special = true;
}

// A record that is cut short ends the list; the records before it are valid.
void ParseExtraArea(FieldCursor extra, Entry& entry) {
  while (extra.Left() > 0) {
    const std::uint64_t size = extra.TakeVint();
    FieldCursor record(extra.TakeBytes(size));
    if (!extra.IsSound()) return;
    switch (record.TakeVint()) {
      case kEncryption:
        entry.encrypted = true;
        break;
      case kHash:
        if (record.TakeVint() == 0) {
          const auto hash = record.TakeBytes(32);
          if (record.IsSound())
            std::copy(hash.begin(), hash.end(), entry.blake2sp.emplace().begin());
        }
        break;
      case kTimes:
        ParseTimes(record, entry);
        break;
      case kVersion:
        record.TakeVint();
        entry.name += ";" + std::to_string(record.TakeVint());
        break;
      case kRedirection:
        ParseRedirection(record, entry);
        break;
      default:
        break;
    }
  }
}

void ParseCompression(std::uint64_t compression, Entry& entry) {
  entry.version = (compression & 0x3FU) == 0 ? 50 : 70;
  entry.solid = (compression & 0x40U) != 0;
  entry.method = static_cast<std::uint32_t>(compression >> 7U & 7U);
  const auto power = static_cast<std::uint32_t>(compression >> 10U & 15U);
  entry.dictionary_kib = 128U << power;
}

bool ParseFile(FieldCursor& fields, FieldCursor extra, Entry& entry) {
  const std::uint64_t flags = fields.TakeVint();
  const std::uint64_t size = fields.TakeVint();
  if ((flags & kSizeUnknown) == 0) entry.unpacked_size = size;
  entry.directory = (flags & kDirectory) != 0;
  entry.attributes = static_cast<std::uint32_t>(fields.TakeVint());
  if ((flags & kHasTime) != 0) entry.modified = fields.Take<std::uint32_t>();
  if ((flags & kHasCrc) != 0) entry.crc = fields.Take<std::uint32_t>();
  ParseCompression(fields.TakeVint(), entry);
  const bool from_unix = fields.TakeVint() == 1;
  entry.host_os = from_unix ? 3 : 2;
  DecodedName name = DecodeRar5Name(fields.TakeText(fields.TakeVint()));
  entry.name = std::move(name.text);
  entry.name_is_sound = name.sound;
  if (!fields.IsSound()) return false;
  const std::uint32_t type = entry.attributes & 0170000U;
  if (from_unix && type != 0 && type != 0100000U && type != 0040000U) entry.special = true;
  ParseExtraArea(extra, entry);
  if (entry.modified) entry.dos_time = ToDosTime(*entry.modified);
  return true;
}

std::uint32_t MainFlags(FieldCursor& fields) {
  const std::uint64_t stored = fields.TakeVint();
  const bool has_number = (stored & 2U) != 0;
  const bool is_first = !has_number || fields.TakeVint() == 0;
  std::uint32_t flags = ports::kRarArchiveNewNames;
  if ((stored & 1U) != 0)
    flags |= ports::kRarArchiveVolume | (is_first ? ports::kRarArchiveFirstVolume : 0U);
  if ((stored & 4U) != 0) flags |= ports::kRarArchiveSolid;
  if ((stored & 8U) != 0) flags |= ports::kRarArchiveRecovery;
  if ((stored & 16U) != 0) flags |= ports::kRarArchiveLocked;
  return flags;
}

// Reads the header after its size; returns false if it is damaged.
bool ParseHeader(std::span<const std::uint8_t> header, Block& block) {
  FieldCursor fields(header);
  const std::uint64_t type = fields.TakeVint();
  const std::uint64_t flags = fields.TakeVint();
  const std::uint64_t extra_size = (flags & kHasExtra) != 0 ? fields.TakeVint() : 0;
  block.data_size = (flags & kHasData) != 0 ? fields.TakeVint() : 0;
  if (!fields.IsSound() || extra_size > fields.Left() || block.data_size > kMaxPackedSize)
    return false;
  const FieldCursor extra(header.last(static_cast<std::size_t>(extra_size)));
  FieldCursor known(header.subspan(header.size() - fields.Left(),
                                   fields.Left() - static_cast<std::size_t>(extra_size)));
  switch (type) {
    case 1:
      block.kind = BlockKind::kMain;
      block.archive_flags = MainFlags(known);
      return known.IsSound();
    case 2:
      block.kind = BlockKind::kFile;
      block.entry.packed_size = block.data_size;
      block.entry.split_before = (flags & kSplitBefore) != 0;
      block.entry.split_after = (flags & kSplitAfter) != 0;
      return ParseFile(known, extra, block.entry);
    case 3:
      block.kind = BlockKind::kService;
      return true;
    case 4:
      block.kind = BlockKind::kEncryption;
      return true;
    case 5:
      block.kind = BlockKind::kEnd;
      block.more_volumes = (known.TakeVint() & 1U) != 0;
      return true;
    default:
      return true;
  }
}

class Rar5BlockReader final : public BlockReader {
 public:
  ports::RarResult Read(os::ReadableFile& file, std::uint64_t offset, Block& block) const override {
    std::array<std::uint8_t, 7> beginning{};  // CRC and at most three bytes of the size
    const auto got = file.ReadAt(offset, beginning.data(), beginning.size());
    if (!got) return ports::kRarReadFailed;
    if (*got < beginning.size()) return ports::kRarEndOfArchive;
    FieldCursor cursor(beginning);
    const auto crc = cursor.Take<std::uint32_t>();
    const std::uint64_t size = cursor.TakeVint();
    if (!cursor.IsSound() || size == 0 || size > kMaxHeaderLength) return ports::kRarBadData;
    const std::size_t size_length = beginning.size() - 4 - cursor.Left();
    std::vector<std::uint8_t> bytes(size_length + static_cast<std::size_t>(size));
    const auto whole = file.ReadAt(offset + 4, bytes.data(), bytes.size());
    if (!whole) return ports::kRarReadFailed;
    if (*whole < bytes.size()) return ports::kRarEndOfArchive;
#ifndef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
    if (crc32_z(0, bytes.data(), bytes.size()) != crc) return ports::kRarBadData;
#else
    (void)crc;
#endif
    block = Block();
    block.data_offset = offset + 4 + bytes.size();
    if (!ParseHeader(std::span(bytes).subspan(size_length), block)) return ports::kRarBadData;
    return ports::kRarOk;
  }

  std::uint64_t FirstOffset() const override {
    return 8;
  }
  bool IsRar5() const override {
    return true;
  }
};

}  // namespace

std::unique_ptr<BlockReader> MakeRar5BlockReader() {
  return std::make_unique<Rar5BlockReader>();
}

}  // namespace companion::rar
