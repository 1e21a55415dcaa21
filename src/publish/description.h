#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "packing/rar_blocks.h"
#include "publish/faults.h"

// The description of a release, an XML file written by hand; docs/publishing.md explains it.
namespace publish {

// A folder of the product and where the updater installs its files and subfolders.
struct FolderRule {
  std::string source;  // relative to the product's folder, "/" between parts; empty for all of it
  std::string target;  // may contain constants, "{p}tm"
  std::string place;   // the line
  bool is_optional = false;  // it may match nothing
};

// Settings for the files that match a mask. Later rules override earlier ones.
struct FileRule {
  std::string mask;
  bool is_skipped = false;
  std::optional<bool> is_com;
  std::optional<bool> is_executable;
  std::optional<std::int32_t> pack_method;
  std::string package;  // a ready-made package, relative to the description's folder
  std::string place;    // the line
  bool is_optional = false;
};

enum class TableKind { kDictionary, kUser, kSkipped };

// The kind of the tables that match a mask. Later rules override earlier ones.
struct TableRule {
  TableKind kind = TableKind::kSkipped;
  std::string mask;
  std::string place;  // the line
  bool is_optional = false;
  bool takes_over = false;  // a dictionary may replace what has been a user's table
};

struct Description {
  std::string folder;  // that contains the description
  std::string version;
  std::string version_place;
  std::string version_id;
  std::int64_t date = 0;  // noon of the release's day, seconds since 1970
  packing::RarFormat format = packing::RarFormat::kRar5;
  std::string needed_updater;
  std::string updater_place;
  std::vector<std::string> updater_files;  // relative to the product's folder; the program first
  std::vector<Located> servers;
  std::vector<FolderRule> folders;
  std::vector<FileRule> files;
  std::vector<TableRule> tables;
  Located oldest_database;  // the oldest version that scripts must update; may be empty
};

// Reads a description. Everything wrong is a fault, but the rest is read too. Returns false if the
// file cannot be read at all.
[[nodiscard]] bool ReadDescription(const std::string& file, Description& description,
                                   Faults& faults);

}  // namespace publish
