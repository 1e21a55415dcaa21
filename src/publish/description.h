#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "packing/rar_blocks.h"
#include "publish/faults.h"

// The description of a release, an XML file written by hand; docs/publishing.md explains it.
namespace publish {

// A folder of the product and where the updater puts what lies in it and below.
struct FolderRule {
  std::string source;  // relative to the product's folder, "/" separates; empty: all of it
  std::string target;  // with constants
};

// What is special about the files that a mask matches. Later rules override earlier ones.
struct FileRule {
  std::string mask;
  bool is_skipped = false;
  std::optional<bool> is_com;
  std::optional<bool> is_executable;
  std::optional<std::int32_t> pack_method;
  std::string package;  // ready-made, relative to the description's folder
};

enum class TableKind { kDictionary, kUser, kSkipped };

// What the tables are that a mask matches. Later rules override earlier ones.
struct TableRule {
  TableKind kind = TableKind::kSkipped;
  std::string mask;
};

struct Description {
  std::string folder;  // where it lies
  std::string version;
  std::string version_id;
  std::int64_t date = 0;  // noon of the release's day, seconds since 1970
  packing::RarFormat format = packing::RarFormat::kRar5;
  std::string needed_updater;
  std::vector<std::string> updater_files;  // relative to the product's folder; the program first
  std::vector<std::string> servers;
  std::vector<FolderRule> folders;
  std::vector<FileRule> files;
  std::vector<TableRule> tables;
  std::string oldest_database;  // the oldest version that scripts must lead on from; may be empty
};

// What is wrong is a fault, and the rest is read all the same. False when there is nothing to read.
[[nodiscard]] bool ReadDescription(const std::string& file, Description& description,
                                   Faults& faults);

// A mask that may well match nothing, as against a name.
inline bool IsPattern(const std::string& mask) {
  return mask.find_first_of("*?") != std::string::npos;
}

}  // namespace publish
