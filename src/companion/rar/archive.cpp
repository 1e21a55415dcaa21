#include "companion/rar/archive.h"

#include <zlib.h>

#include <algorithm>
#include <new>

#include "companion/rar/checksum.h"
#include "companion/rar/failure.h"
#include "companion/rar/names.h"

namespace companion::rar {

// Reads the packed bytes of the current entry from all its volumes.
class Archive::PartSource final : public PackedSource {
 public:
  explicit PartSource(Archive& archive) : archive_(archive) {}

  std::size_t Read(std::uint8_t* buffer, std::size_t length) override {
    while (position_ == archive_.part_.data_size) {
      if (!archive_.part_.entry.split_after) return 0;
      archive_.NextPart();
      position_ = 0;
    }
    const auto wanted = static_cast<std::size_t>(
        std::min<std::uint64_t>(length, archive_.part_.data_size - position_));
    const auto got = archive_.file_->ReadAt(archive_.part_.data_offset + position_, buffer, wanted);
    if (!got || *got == 0) throw Failure{ports::kRarReadFailed};
    position_ += *got;
    return *got;
  }

 private:
  Archive& archive_;
  std::uint64_t position_ = 0;
};

class Archive::Sink final : public ContentSink {
 public:
  Sink(Archive& archive, os::WritableFile* file)
      : archive_(archive),
        file_(file),
        checksum_(archive.entry_),
        limit_(std::min(archive.entry_.unpacked_size.value_or(kMaxEntrySize),
                        archive.most_content_ - archive.total_written_)) {}

  void Write(const std::uint8_t* data, std::size_t length) override {
    if (length > limit_ - written_) throw Failure{ports::kRarBadData};
    checksum_.Update(data, length);
    written_ += length;
    archive_.total_written_ += length;
    if (archive_.listener_ && !archive_.listener_(data, length)) throw Failure{ports::kRarUnknown};
    if (file_ != nullptr && !file_->Write(data, length)) throw Failure{ports::kRarWriteFailed};
  }

  // entry: as its last part describes it, which has the checksum of the whole entry.
  void CheckWhole(const Entry& last_part) {
    const Entry& entry = archive_.entry_;
    // Packed data that ends before the declared size is sound if nothing contradicts it: in entries
    // without a checksum only their own end mark shows the end.
    const bool has_checksum = last_part.crc || last_part.blake2sp;
    const bool may_be_shorter = entry.method != 0 && !has_checksum;
    if (entry.unpacked_size && written_ != *entry.unpacked_size && !may_be_shorter) {
      throw Failure{ports::kRarBadData};
    }
    if (!checksum_.Matches(last_part)) throw Failure{ports::kRarBadData};
  }

 private:
  Archive& archive_;
  os::WritableFile* file_;
  Checksum checksum_;
  std::uint64_t limit_;
  std::uint64_t written_ = 0;
};

Archive::Archive(std::string path, bool for_extraction, VolumeOpener opener,
                 std::uint64_t most_content)
    : path_(std::move(path)),
      for_extraction_(for_extraction),
      opener_(std::move(opener)),
      most_content_(most_content) {
  file_ = opener_(path_);
  if (!file_) throw Failure{ports::kRarOpenFailed};
  reader_ = RecogniseFormat(*file_);
  if (!reader_) throw Failure{ports::kRarBadArchive};
  offset_ = reader_->FirstOffset();
  ReadBeginning();
}

// Reads the flags of the main header. Damage is reported later, when the entries are read.
void Archive::ReadBeginning() {
  Block block;
  if (reader_->Read(*file_, offset_, block) != ports::kRarOk) return;
  if (block.kind == BlockKind::kEncryption) flags_ |= ports::kRarArchiveEncryptedHeaders;
  if (block.kind == BlockKind::kMain) flags_ |= block.archive_flags;
  headers_encrypted_ = (flags_ & ports::kRarArchiveEncryptedHeaders) != 0;
}

ports::RarResult Archive::ReadHeader() {
  if (pending_) {
    const ports::RarResult result = Skip();
    if (result != ports::kRarOk) return ended_ = result;
  }
  if (ended_ != ports::kRarOk) return ended_;
  const ports::RarResult result = FindEntry();
  if (result != ports::kRarOk) ended_ = result;
  return result;
}

ports::RarResult Archive::FindEntry() {
  if (headers_encrypted_) return ports::kRarMissingPassword;
  for (;;) {
    Block block;
    const ports::RarResult result = reader_->Read(*file_, offset_, block);
    if (result != ports::kRarOk) return result;
    main_seen_ = main_seen_ || block.kind == BlockKind::kMain;
    // A block before the main header is no entry.
    if (block.kind == BlockKind::kFile && main_seen_) {
      entry_ = block.entry;
      part_ = std::move(block);
      pending_ = true;
      return ports::kRarOk;
    }
    if (block.kind == BlockKind::kEncryption) return ports::kRarMissingPassword;
    if (block.kind == BlockKind::kEnd) {
      if (!block.more_volumes) return ports::kRarEndOfArchive;
      const ports::RarResult opened = OpenNextVolume();
      if (opened != ports::kRarOk) return opened;
      continue;
    }
    if (block.data_size > 0 && block.NextOffset() > file_->Size()) return ports::kRarReadFailed;
    offset_ = block.NextOffset();
  }
}

ports::RarResult Archive::OpenNextVolume() {
  const bool new_names = reader_->IsRar5() || (flags_ & ports::kRarArchiveNewNames) != 0;
  const auto next = NextVolumeName(path_, new_names);
  if (!next) return ports::kRarOpenFailed;
  std::unique_ptr<os::ReadableFile> file = opener_(*next);
  if (!file) return ports::kRarOpenFailed;
  std::unique_ptr<BlockReader> reader = RecogniseFormat(*file);
  if (!reader || reader->IsRar5() != reader_->IsRar5()) return ports::kRarBadData;
  path_ = *next;
  file_ = std::move(file);
  reader_ = std::move(reader);
  offset_ = reader_->FirstOffset();
  return ports::kRarOk;
}

void Archive::NextPart() {
  const ports::RarResult opened = OpenNextVolume();
  if (opened != ports::kRarOk) throw Failure{opened};
  for (;;) {
    Block block;
    const ports::RarResult result = reader_->Read(*file_, offset_, block);
    if (result == ports::kRarEndOfArchive) throw Failure{ports::kRarBadData};
    if (result != ports::kRarOk) throw Failure{result};
    if (block.kind == BlockKind::kEncryption) throw Failure{ports::kRarMissingPassword};
    if (block.kind == BlockKind::kEnd) throw Failure{ports::kRarBadData};
    offset_ = block.NextOffset();
    if (block.kind != BlockKind::kFile) continue;
    if (!block.entry.split_before || block.entry.name != entry_.name)
      throw Failure{ports::kRarBadData};
    part_ = std::move(block);
    return;
  }
}

void Archive::CheckPresent(const Block& block) const {
  if (block.NextOffset() > file_->Size()) throw Failure{ports::kRarReadFailed};
}

void Archive::PassOver() {
  CheckPresent(part_);
  while (part_.entry.split_after) {
    NextPart();
    CheckPresent(part_);
  }
}

// Whatever happened to the entry, the next header is searched for after the part reached last.
template <typename Action>
ports::RarResult Archive::Process(Action action) {
  if (!pending_) return ended_ == ports::kRarOk ? ports::kRarEndOfArchive : ended_;
  pending_ = false;
  ports::RarResult result = ports::kRarOk;
  try {
    action();
  } catch (const Failure& failure) {
    result = failure.code;
  } catch (const std::bad_alloc&) {
    result = ports::kRarNoMemory;
  }
  try {
    PassOver();
  } catch (const Failure& failure) {
    if (result == ports::kRarOk) result = failure.code;
    ended_ = failure.code;
  }
  offset_ = part_.NextOffset();
  return result;
}

ports::RarResult Archive::Skip() {
  return Process([&] {
    if (!NeedsDecodingForLaterEntries()) return;
    try {
      Decode(nullptr);
    } catch (const Failure&) {
      // The entry is skipped; a later solid one will report that the chain is broken.
    }
  });
}

ports::RarResult Archive::Test() {
  return Process([&] {
    if (!for_extraction_) return;
    CheckExtractable();
    if (!entry_.directory) Decode(nullptr);
  });
}

ports::RarResult Archive::Extract(const std::string& folder, const std::string& target) {
  return Process([&] {
    if (for_extraction_) ExtractTo(folder, target);
  });
}

bool Archive::NeedsDecodingForLaterEntries() const {
  const bool in_solid_archive = for_extraction_ && (flags_ & ports::kRarArchiveSolid) != 0;
  return in_solid_archive && entry_.method != 0 && !entry_.directory && !entry_.encrypted &&
         !entry_.split_before;
}

// Finds reasons against extraction before anything is created.
void Archive::CheckExtractable() const {
  const bool known_version = reader_->IsRar5() ? entry_.version == 50 : entry_.version <= 36;
  if (entry_.encrypted) throw Failure{ports::kRarMissingPassword};
  if (entry_.split_before) throw Failure{ports::kRarBadData};
  if (!known_version || entry_.method > 5) throw Failure{ports::kRarUnknownFormat};
  if (entry_.unpacked_size.value_or(0) > kMaxEntrySize) throw Failure{ports::kRarBadData};
  if (entry_.dictionary_kib > kMaxDictionaryKib && entry_.method != 0) {
    throw Failure{ports::kRarUnknownFormat};
  }
  if (entry_.directory && (entry_.packed_size > 0 || entry_.unpacked_size.value_or(0) > 0)) {
    throw Failure{ports::kRarBadData};
  }
}

Decoder& Archive::DecoderForEntry() {
  if (entry_.method == 0) {
    if (!stored_decoder_) stored_decoder_ = MakeStoredDecoder();
    return *stored_decoder_;
  }
  if (!entry_.solid) solid_chain_is_whole_ = true;
  // The decoder starts afresh by itself; its memory is reused for the next entry.
  if (const DecoderFamily family = FamilyOf(entry_); !decompressor_ || family != family_) {
    decompressor_ = MakeDecompressor(family);
    family_ = family;
  }
  if (!decompressor_) throw Failure{ports::kRarUnknownFormat};
  if (!solid_chain_is_whole_) throw Failure{ports::kRarBadData};
  return *decompressor_;
}

void Archive::Decode(os::WritableFile* file) {
  Decoder& decoder = DecoderForEntry();
  const bool in_chain = entry_.method != 0;
  PartSource source(*this);
  Sink sink(*this, file);
  if (in_chain) solid_chain_is_whole_ = false;
  decoder.Decode(entry_, source, sink);
  if (in_chain) solid_chain_is_whole_ = true;
  PassOver();
  sink.CheckWhole(part_.entry);
}

void Archive::ExtractTo(const std::string& folder, const std::string& target) {
  CheckExtractable();
  const auto parts = SafeNameParts({entry_.name, entry_.name_is_sound});
  if (!parts || entry_.special) throw Failure{ports::kRarCreateFailed};
  std::string root = folder.empty() ? "." : folder;
  std::vector<std::string> beneath = *parts;
  if (!target.empty()) {
    root = os::FolderOf(target);
    beneath = {os::NameOf(target)};
  }
  os::Attributes attributes;
  attributes.modified = entry_.modified;
  if (entry_.host_os == 3) {
    if (entry_.attributes != 0) attributes.unix_mode = entry_.attributes & 0777U;
  } else {
    attributes.dos_attributes = entry_.attributes;
  }
  if (entry_.directory) {
    if (!os::MakeFolderBeneath(root, beneath, attributes)) throw Failure{ports::kRarCreateFailed};
    return;
  }
  // An entry that no decoder knows leaves no file.
  DecoderForEntry();
  const std::unique_ptr<os::WritableFile> file = os::CreateBeneath(root, beneath);
  if (!file) throw Failure{ports::kRarCreateFailed};
  Decode(file.get());
  if (!file->Apply(attributes) || !file->Close()) throw Failure{ports::kRarWriteFailed};
}

}  // namespace companion::rar
