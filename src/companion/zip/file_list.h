#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "companion/os.h"

namespace companion::zip {

// The options of one zip command that have an effect.
struct ZipSettings {
  std::string root;  // names are taken, and stored, relative to it
  int level = 9;
  bool with_extra = true;
  bool no_folder_entries = false;
  bool junk_folders = false;
  bool with_system_files = false;
  bool crlf_to_lf = false;
  bool lf_to_crlf = false;
  bool move = false;
  bool latest_time = false;
  bool ask_comment = false;
  bool quiet = false;
  int recurse = 0;  // 1: folders with everything in them; 2: masks in all folders
  std::optional<std::int64_t> earliest;  // older files are left out
  std::optional<std::int64_t> end;       // files of this time or later are left out
};

struct ZipInput {
  std::string path;         // on the disk
  std::string stored_name;  // UTF-8; a folder's name ends with "/"
  os::Facts facts;
};

struct ZipInputs {
  std::vector<ZipInput> found;
  std::vector<std::string> missing;  // names that match nothing
};

// Finds what the names mean: files, folders, or masks with "*" and "?" in the last part. The zip
// file itself is left out. Throws Failure kZipBadOptions if two files would get the same name.
ZipInputs CollectInputs(const std::vector<std::string>& names, const ZipSettings& settings,
                        const std::string& zip_path);

// Ignores case if the system ignores it in file names.
bool MatchesMask(const std::string& name, const std::string& mask);

}  // namespace companion::zip
