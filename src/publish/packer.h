#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "packing/rar_blocks.h"
#include "publish/faults.h"
#include "publish/package_cache.h"

namespace publish {

struct PackerOptions {
  // The archiver's command line; {archive} and {file} stand for the two names. The words are split
  // as a command line of the updater is, and no shell is between.
  std::string command;
  std::string cache;                // folder; empty: nothing is kept
  std::int64_t most_silence = 600;  // seconds without a byte of output, then it is ended
};

// Raises a UsageError if the command lacks one of the names.
void RequireMarks(const PackerOptions& options);

// A file that is to be packed alone.
struct PackJob {
  std::string place;   // in faults
  std::string source;  // the content
  std::string hash;    // its SHA-256 as text
  std::int64_t length = 0;
  std::string name;  // of the entry
  bool is_executable = false;
  std::int64_t most_bytes = 0;  // an archive that is not shorter is not wanted
};

// The maker's own archiver. An archive is taken only if the updater's library unpacks it to the
// file. The archiver gets a copy with one time and mode, so that the same content gives the same
// archive.
class Packer {
 public:
  Packer(const PackerOptions& options, packing::RarFormat format);

  // Gives the path of the archive, which lies in the scratch folder; nothing if it is not shorter
  // or if there was a fault. The folder does not exist before and is for the caller to remove. May
  // be called on several threads.
  std::optional<std::string> Pack(const PackJob& job, const std::string& scratch, Faults& faults);

 private:
  bool Run(const PackJob& job, const std::string& scratch, const std::string& archive,
           Faults& faults) const;
  bool IsSound(const PackJob& job, const std::string& archive, const std::string& scratch,
               Faults& faults) const;
  std::string KeyOf(const PackJob& job) const;

  std::vector<std::string> words_;  // of the command, the marks still in it
  std::string command_;
  packing::RarFormat format_;
  std::int64_t most_silence_;
  PackageCache cache_;
  std::atomic<int> failures_ = 0;
};

}  // namespace publish
