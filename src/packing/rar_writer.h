#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "packing/rar_blocks.h"
#include "ports/file_system.h"
#include "sha256/sha256.h"

namespace packing {

// An entry's name, time and mode. The caller decides on them: the two systems would take different
// ones from the disk.
struct RarEntryFacts {
  std::string name;                        // UTF-8, "/" between folders
  std::int64_t modified = 0;               // seconds since 1970, UTC
  std::optional<std::uint32_t> unix_mode;  // the nine permission bits; absent in a Windows entry
};

// Called for every piece that has been read or written, with its length in bytes; an exception from
// it ends the work.
using PieceHandler = std::function<void(std::size_t)>;

// The content of a file as it was packed.
struct PackedFile {
  std::int64_t length = 0;  // bytes
  sha256::Digest digest{};  // of the content
};

// Writes a package whose entries are stored without compression; every RAR program can read it. RAR
// 5 keeps names and times exactly. RAR 4, for companion libraries that read nothing newer, keeps
// local times in steps of two seconds.
class StoredRarWriter {
 public:
  // The largest file that can be added, in bytes.
  static constexpr std::int64_t kLargestFile = 0x7FFFFFFF;

  // Creates the package, replacing an old one; with_trailer appends integrity data (pack method 2).
  // Failures are ProgramErrors, here and below. The package is not usable before Finish returns.
  StoredRarWriter(const std::string& package, RarFormat format, bool with_trailer = false);

  // on_piece is called for every piece of the source, once while it is hashed and once while it is
  // copied.
  PackedFile AddFile(const RarEntryFacts& facts, const std::string& source,
                     const PieceHandler& on_piece = {});
  void AddFolder(const RarEntryFacts& facts);

  // Completes the package. It is flushed to the disk unless the caller will do that for many files
  // at once.
  void Finish(bool is_flushed = true);

 private:
  void Write(std::string_view bytes);

  std::string package_;
  RarFormat format_;
  std::unique_ptr<ports::File> file_;
  std::optional<sha256::Stream> digest_;  // of the package so far, for its trailer
  std::uint64_t length_ = 0;
};

// The length of the package of one such file, in bytes.
std::int64_t StoredSize(RarFormat format, const RarEntryFacts& facts, std::int64_t length);

// Copies a file and appends integrity data for pack method 2. The copy is not flushed to the disk.
void CopyFileWithIntegrityTrailer(const std::string& source, const std::string& target,
                                  const PieceHandler& on_piece = {});

}  // namespace packing
