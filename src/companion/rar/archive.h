#pragma once

#include <functional>
#include <memory>
#include <string>

#include "companion/rar/block.h"
#include "companion/rar/decoder.h"
#include "companion/rar/limits.h"

namespace companion::rar {

// Opens the volume of that path; returns null if it does not exist or cannot be read.
using VolumeOpener = std::function<std::unique_ptr<os::ReadableFile>(const std::string& path)>;

// Receives extracted bytes; returns false to stop the extraction.
using ContentListener = std::function<bool(const std::uint8_t* data, std::size_t length)>;

// An open archive, read entry by entry from its first block through all its volumes.
class Archive {
 public:
  // Gives at most that many bytes of content, all entries together. Throws Failure: kRarOpenFailed,
  // kRarBadArchive.
  Archive(std::string path, bool for_extraction, VolumeOpener opener,
          std::uint64_t most_content = kMaxTotalSize);

  // Finds the next entry, skipping the data of one that was not processed.
  ports::RarResult ReadHeader();

  // Valid after ReadHeader has given kRarOk.
  const Entry& Current() const { return entry_; }

  // RarArchiveFlags, as far as the main header could be read.
  std::uint32_t Flags() const { return flags_; }
  const std::string& VolumePath() const { return path_; }

  ports::RarResult Skip();
  ports::RarResult Test();

  // Creates the entry below the folder ("" is the current one) under its own name or, if a target
  // is given, at that path.
  ports::RarResult Extract(const std::string& folder, const std::string& target);

  void SetListener(ContentListener listener) { listener_ = std::move(listener); }

 private:
  class PartSource;
  class Sink;

  void ReadBeginning();
  ports::RarResult FindEntry();
  ports::RarResult OpenNextVolume();
  // Continues with the part of the current entry in the next volume. Throws Failure.
  void NextPart();
  // Skips the rest of the current entry in all volumes. Throws Failure.
  void PassOver();
  void CheckPresent(const Block& block) const;
  // Decodes the current entry, into the file unless that is null, and checks it. Throws Failure.
  void Decode(os::WritableFile* file);
  Decoder& DecoderForEntry();
  bool NeedsDecodingForLaterEntries() const;
  void ExtractTo(const std::string& folder, const std::string& target);
  void CheckExtractable() const;
  template <typename Action>
  ports::RarResult Process(Action action);

  std::string path_;
  bool for_extraction_;
  VolumeOpener opener_;
  ContentListener listener_;
  std::unique_ptr<os::ReadableFile> file_;
  std::unique_ptr<BlockReader> reader_;
  std::uint64_t offset_ = 0;  // of the next block
  std::uint32_t flags_ = 0;
  bool headers_encrypted_ = false;
  bool main_seen_ = false;
  ports::RarResult ended_ = ports::kRarOk;  // how reading has ended, if it has

  Entry entry_;           // as in the volume where it begins
  Block part_;            // its part in the current volume
  bool pending_ = false;  // an entry was found and not processed
  std::uint64_t most_content_;
  std::uint64_t total_written_ = 0;

  std::unique_ptr<Decoder> stored_decoder_;
  std::unique_ptr<Decoder> decompressor_;
  DecoderFamily family_ = DecoderFamily::kNone;  // of decompressor_
  bool solid_chain_is_whole_ = true;
};

}  // namespace companion::rar
