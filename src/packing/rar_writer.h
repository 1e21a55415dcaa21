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

// Facts of an entry that the disk does not tell on both systems alike.
struct RarEntryFacts {
  std::string name;                        // UTF-8; "/" separates folders
  std::int64_t modified = 0;               // seconds since 1970, UTC
  std::optional<std::uint32_t> unix_mode;  // the nine permission bits; none: a Windows entry
};

// What a file was when it was packed.
struct PackedFile {
  std::int64_t length = 0;  // bytes
  sha256::Digest digest{};  // of its content
};

// Writes a package whose entries are stored as they are, readable by every RAR program. RAR 5 keeps
// names and times exactly; RAR 4 is for companion libraries that read nothing newer (times local,
// in steps of two seconds).
class StoredRarWriter {
 public:
  // Files are at most 2 GiB less one byte.
  static constexpr std::int64_t kLargestFile = 0x7FFFFFFF;

  // Creates the package, emptying an old one. with_trailer: integrity data for pack method 2 will
  // follow behind the archive's end. Failures are ProgramErrors, here and below; a package that
  // Finish has not ended is no package.
  StoredRarWriter(const std::string& package, RarFormat format, bool with_trailer = false);

  // on_piece is called before every piece of the source that is read or written; what it raises
  // ends the work.
  PackedFile AddFile(const RarEntryFacts& facts, const std::string& source,
                     const std::function<void()>& on_piece = {});
  void AddFolder(const RarEntryFacts& facts);

  // Ends the package and brings it to the disk.
  void Finish();

 private:
  void Write(std::string_view bytes);

  std::string package_;
  RarFormat format_;
  std::unique_ptr<ports::File> file_;
  std::optional<sha256::Stream> digest_;  // of the package, for its trailer
  std::uint64_t length_ = 0;
};

// Copies a file with integrity data for pack method 2 behind its content; on_piece as above.
void CopyFileWithIntegrityTrailer(const std::string& source, const std::string& target,
                                  const std::function<void()>& on_piece = {});

}  // namespace packing
