#pragma once

#include "tools/command_line.h"

// What tmpublish prints apart from faults; %1 to %9 stand for the values that tools::Fill puts in.
namespace publish::texts {

inline constexpr const char* kHelpHead =
    "tmpublish - makes releases for the update server and checks them";
inline constexpr const char* kHelpTail =
    R"(Exit codes: 0 done, 1 faults found (they are listed; nothing is published), 2 wrong usage,
3 failed or stopped (the reason is on standard error). Faults of one cause share a line; --json
lists them all. docs/publishing.md describes DESCRIPTION and what is refused.
)";

// Options of every command that signs.
inline const std::vector<tools::Option> kSigningOptions = {
    {"--sign", "KEYFILE", "sign the announcement with this secret key"},
    {"--expires", "DAY|DAYS", "... whose last day is YYYY-MM-DD, or so many days from today (180)"},
    {"--password-file", "FILE",
     "... its password is the first line of FILE (else it is asked for)"},
    {"--serial", "NUMBER", "... with this serial instead of the next one"}};

inline std::vector<tools::Option> WithSigning(std::vector<tools::Option> options) {
  options.insert(options.end(), kSigningOptions.begin(), kSigningOptions.end());
  return options;
}

inline const tools::Option kAnnouncingFolder = {"--output", "FOLDER", "what the web server offers"};

inline const tools::Option kTry = {
    "--try", "DATABASE",
    "... with a rehearsal of the update on a copy of this user's database (may be given again)"};
inline const tools::Option kMirrors = {"--mirrors", "",
                                       "... as well as on every server of its list"};
inline const tools::Option kSample = {"--sample", "NUMBER",
                                      "... there only so many of its files, chosen at random"};
inline const tools::Option kDowngrade = {"--downgrade", "", "even below the announced version"};

inline const tools::Usage kPublish = {
    "publish",
    "DESCRIPTION",
    1,
    1,
    "make a release and announce it",
    WithSigning(
        {{"--product", "FOLDER", "the product's files"},
         {"--database", "FILE", "the reference database"},
         {"--scripts", "FOLDER", "the update scripts (*.xml); without it there are none"},
         {"--output", "FOLDER", "what the web server offers; older releases stay"},
         kTry,
         kDowngrade,
         {"--packer", "COMMAND",
          "... packed by this archiver, \"NAME OPTIONS {archive} {file}\", where that is shorter"},
         {"--cache", "FOLDER", "... which keeps its archives here for the next release"},
         {"--packer-limit", "SECONDS", "... and is ended when it writes nothing for so long (600)"},
         {"--replace", "", "... even over a release of the same version"},
         {"--no-announce", "", "make the release, but leave the announced one announced"}})};
inline const tools::Usage kAnnounce = {
    "announce",
    "VERSION",
    1,
    1,
    "announce a release that has been made",
    WithSigning({kAnnouncingFolder,
                 kDowngrade,
                 {"--mirrors", "", "only if every server of its list has it, whole"},
                 kSample})};
inline const tools::Usage kRetract = {"retract",
                                      "",
                                      0,
                                      0,
                                      "announce the release before the announced one again",
                                      WithSigning({kAnnouncingFolder})};
inline const tools::Usage kRenew = {"renew",
                                    "",
                                    0,
                                    0,
                                    "sign the announced release again, for another time",
                                    WithSigning({kAnnouncingFolder})};
inline const tools::Usage kPrune = {
    "prune",
    "",
    0,
    0,
    "remove old releases; the announced one and all newer ones stay",
    {kAnnouncingFolder,
     {"--keep", "NUMBER", "so many stay, the announced one and those before it"},
     {"--dry-run", "", "only name what would be removed"}}};
inline const tools::Usage kKeygen = {
    "keygen",
    "KEYFILE",
    1,
    1,
    "make a key: KEYFILE is the secret part, KEYFILE.pub the public one",
    {{"--password-file", "FILE", "the password is the first line of FILE (else it is asked for)"},
     {"--no-password", "", "who has KEYFILE can sign"}}};
inline const tools::Usage kCheck = {
    "check",
    "FOLDER|URL",
    1,
    1,
    "read the announced release as the updater will and report every fault",
    {{"--from", "VERSION", "... with scripts for databases of this version (3.5.0) on"},
     kTry,
     {"--key", "KEY", "... as an updater with this public key (or the key in this file) will"},
     kMirrors,
     kSample}};
inline const tools::Usage kDiff = {
    "diff",
    "OLD NEW",
    2,
    2,
    "what a user of the release OLD downloads to get NEW; each is a release's folder (TMW_3.6.0.2) "
    "or its address, or a server's, which stands for the release it announces",
    {}};

inline constexpr const char* kVersionNeeded = "VERSION is four numbers";
inline constexpr const char* kNeedsSign = "%1 needs --sign";
inline constexpr const char* kExpiresNeedsDay = "--expires needs a day to come, or days";
inline constexpr const char* kSerialNeedsNumber = "--serial needs a number above 0";
inline constexpr const char* kSignsWhatIsAnnounced =
    "--sign signs what is announced, and --no-announce announces nothing";
inline constexpr const char* kTwoPasswords = "--no-password and --password-file exclude each other";
inline constexpr const char* kFromNeedsVersion = "--from needs a version of three numbers";

inline constexpr const char* kNeedsMirrors = "%1 needs --mirrors";
inline constexpr const char* kSampleNeedsNumber = "--sample needs a number above 0";
inline constexpr const char* kKeepNeedsNumber = "--keep needs a number above 0";

inline constexpr const char* kMirrorWhole = "%1: whole, checked %2 of %3 files\n";
inline constexpr const char* kMirrorFaulty = "%1: faults: %2, for example %3: %4\n";
inline constexpr const char* kMirrorUnreached = "%1: out of reach: %2\n";

inline constexpr const char* kFault = "%1: %2\n";
inline constexpr const char* kFilesOfCause = "%1 files, for example %2";
inline constexpr const char* kTablesOfCause = "%1 tables, for example %2";
inline constexpr const char* kLinesOfCause = "%1 lines, for example %2";
inline constexpr const char* kFaultCount = "faults: %1\n";
inline constexpr const char* kNothingPublished = "nothing has been published\n";
inline constexpr const char* kNothingAnnouncedNow = "nothing has been announced\n";
inline constexpr const char* kPublished =
    "%1\n  files: %2, dictionaries: %3, user tables: %4, scripts: %5, bytes of a whole download: "
    "%6\n";
inline constexpr const char* kAnnounced = "announced: %1\n";
inline constexpr const char* kRemoved = "removed: %1, bytes: %2\n";
inline constexpr const char* kWouldRemove = "would remove: %1, bytes: %2\n";
inline constexpr const char* kNothingToRemove = "nothing to remove\n";
inline constexpr const char* kSignedAs = "signed by the key %1: serial %2, last day %3\n";
inline constexpr const char* kNotAnnounced =
    "not announced; tmpublish announce %1 --output %2 does it\n";
inline constexpr const char* kMadeKey =
    "secret key: %1\npublic key: %2\n%3\nThe updater takes it by -DTMW_PUBLIC_KEYS=%3 or the "
    "setting General\\UpdateKeys.\n";
inline constexpr const char* kWarning = "warning: %1: %2\n";
inline constexpr const char* kComment = "trusted comment: %1\n";
inline constexpr const char* kInOrder =
    "release %1 is in order: files: %2, tables: %3, bytes of a whole download: %4\n";

// Differences between releases.
inline constexpr const char* kReleases = "%1 -> %2\n";
inline constexpr const char* kIsNew = " (new)";
inline constexpr const char* kLeftOver = "left over";
inline constexpr const char* kVolumes =
    "bytes to download: %1\nbytes on a client installation: %2\n";

}  // namespace publish::texts
