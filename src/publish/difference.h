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
  bool is_new = false;  // the old release has nothing in its place
};

struct Difference {
  std::string old_version;
  std::string new_version;
  std::vector<Download> downloads;     // in the order of the updater
  std::vector<std::string> left_over;  // files of the old release only; the updater leaves them
  std::int64_t volume = 0;             // bytes, as the updater announces them
  std::int64_t client_volume = 0;      // on a client installation: program files only
};

// For a user whose installation is the old release, unchanged.
Difference Compare(const Manifest& old_release, const Manifest& new_release);

}  // namespace publish
