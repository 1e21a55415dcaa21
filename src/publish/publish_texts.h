#pragma once

#include "tools/command_line.h"

// What tmpublish prints apart from faults; %1 to %9 stand for the values that tools::Fill puts in.
namespace publish::texts {

inline constexpr const char* kHelpHead =
    "tmpublish - makes releases for the update server and checks them";
inline constexpr const char* kHelpTail =
    R"(Exit codes: 0 done, 1 faults found (they are listed; nothing is published), 2 wrong usage,
3 failed or stopped (the reason is on standard error). docs/publishing.md describes DESCRIPTION.
)";

inline const tools::Usage kPublish = {
    "publish",
    "DESCRIPTION",
    1,
    1,
    "make a release and announce it",
    {{"--product", "FOLDER", "the product's files"},
     {"--database", "FILE", "the reference database"},
     {"--scripts", "FOLDER", "the update scripts (*.xml)"},
     {"--output", "FOLDER", "what the web server offers; older releases stay"},
     {"--replace", "", "... even over a release of the same version"}}};
inline const tools::Usage kCheck = {
    "check",
    "FOLDER|URL",
    1,
    1,
    "read the announced release as the updater will and report every fault",
    {{"--from", "VERSION", "... with scripts for databases of this version (3.5.0) on"}}};
inline const tools::Usage kDiff = {
    "diff",
    "OLD NEW",
    2,
    2,
    "what a user of the release OLD downloads to get NEW; each is a release's folder (TMW_3.6.0.2) "
    "or its address, or a server's, which stands for the release it announces",
    {}};

inline constexpr const char* kFromNeedsVersion = "--from needs a version of three numbers";

inline constexpr const char* kFaultCount = "faults: %1\n";
inline constexpr const char* kNothingPublished = "nothing has been published\n";
inline constexpr const char* kPublished =
    "%1\n  files: %2, dictionaries: %3, user tables: %4, scripts: %5, bytes of a whole download: "
    "%6\n";
inline constexpr const char* kInOrder =
    "release %1 is in order: files: %2, tables: %3, bytes of a whole download: %4\n";

// Differences between releases.
inline constexpr const char* kReleases = "%1 -> %2\n";
inline constexpr const char* kIsNew = " (new)";
inline constexpr const char* kLeftOver = "left over";
inline constexpr const char* kVolumes =
    "bytes to download: %1\nbytes on a client installation: %2\n";

}  // namespace publish::texts
