#pragma once

#include <string>

#include "publish/checker.h"
#include "publish/difference.h"
#include "publish/publisher.h"

// What tmpublish's commands print apart from faults.
namespace publish::texts {

inline constexpr const char* kHelpHead =
    "tmpublish - makes releases for the update server and checks them";
inline constexpr const char* kHelpTail =
    R"(Exit codes: 0 done, 1 faults found (they are listed; nothing is published), 2 wrong usage,
3 failed or stopped (the reason is on standard error). docs/publishing.md describes DESCRIPTION.
)";

inline constexpr const char* kPublishHelp = "make a release and announce it";
inline constexpr const char* kProductHelp = "the product's files";
inline constexpr const char* kDatabaseHelp = "the reference database";
inline constexpr const char* kScriptsHelp = "the update scripts (*.xml)";
inline constexpr const char* kOutputHelp = "what the web server offers; older releases stay";
inline constexpr const char* kReplaceHelp = "... even over a release of the same version";
inline constexpr const char* kCheckHelp =
    "read the announced release as the updater will and report every fault";
inline constexpr const char* kFromHelp =
    "... with scripts for databases of this version (3.5.0) on";
inline constexpr const char* kDiffHelp =
    "what a user of the release OLD downloads to get NEW; each is a release's folder "
    "(TMW_3.6.0.2) or its address, or a server's, which stands for the release it announces";

inline constexpr const char* kFromNeedsVersion = "--from needs a version of three numbers";

inline std::string FaultCount(std::size_t count) {
  return "faults: " + std::to_string(count) + "\n";
}

inline constexpr const char* kNothingPublished = "nothing has been published\n";
inline std::string Published(const PublishedRelease& made) {
  return made.folder + "\n  files: " + std::to_string(made.files) +
         ", dictionaries: " + std::to_string(made.dictionaries) +
         ", user tables: " + std::to_string(made.user_tables) +
         ", scripts: " + std::to_string(made.scripts) +
         ", bytes of a whole download: " + std::to_string(made.volume) + "\n";
}

inline std::string InOrder(const CheckedRelease& release) {
  return "release " + release.version + " is in order: files: " + std::to_string(release.files) +
         ", tables: " + std::to_string(release.tables) +
         ", bytes of a whole download: " + std::to_string(release.volume) + "\n";
}

inline const char* NameOf(DownloadKind kind) {
  if (kind == DownloadKind::kFile) return "file";
  return kind == DownloadKind::kDictionary ? "dictionary" : "package";
}

inline std::string WordsOf(const Difference& difference) {
  std::string words = difference.old_version + " -> " + difference.new_version + "\n";
  for (const Download& download : difference.downloads) {
    words += std::to_string(download.bytes) + "\t" + NameOf(download.kind) + "\t" + download.name +
             (download.is_new ? " (new)" : "") + "\n";
  }
  for (const std::string& file : difference.left_over)
    words += "0\tleft over\t" + file + "\n";
  return words + "bytes to download: " + std::to_string(difference.volume) +
         "\nbytes on a client installation: " + std::to_string(difference.client_volume) + "\n";
}

}  // namespace publish::texts
