#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "publish/manifest.h"

namespace publish {

enum class DownloadKind { kFile, kDictionary, kPackage };

// Something that a user of the old release downloads.
struct Download {
  DownloadKind kind = DownloadKind::kFile;
  std::string name;
  std::int64_t bytes = 0;
  bool is_new = false;  // the old release has nothing there
};

struct Difference {
  std::string old_version;
  std::string new_version;
  std::vector<Download> downloads;     // in the updater's order
  std::vector<std::string> left_over;  // files of the old release only, which the updater leaves
  std::int64_t volume = 0;             // bytes, as the updater announces them
  std::int64_t client_volume = 0;      // the same for a client installation: program files only
};

// What changes for a user whose installation is the unmodified old release.
Difference Compare(const Manifest& old_release, const Manifest& new_release);

}  // namespace publish
