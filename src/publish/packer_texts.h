#pragma once

// What tmpublish says of the maker's own archiver; %1 to %9 stand for the values that tools::Fill
// puts in.
namespace publish::texts {

// Wrong command lines.
inline constexpr const char* kPackerNeeds = "--packer needs %1 in its command";
inline constexpr const char* kNeedsPacker = "%1 needs --packer";
inline constexpr const char* kLimitNeedsSeconds = "--packer-limit needs a number of seconds";

// Faults.
inline constexpr const char* kPackerNotStarted = "The packer cannot be started: %1";
inline constexpr const char* kPackerFailed = "The packer has failed with exit code %1%2";
inline constexpr const char* kPackerSays = ": %1";
inline constexpr const char* kPackerHangs =
    "The packer was ended: it has written nothing for %1 seconds%2";
inline constexpr const char* kPackerMadeNothing = "The packer has made no archive%1";
inline constexpr const char* kPackerMadeUnreadable =
    "The updater could not read what the packer has made: %1";
inline constexpr const char* kPackerMadeOther =
    "What the packer has made does not unpack to the file.";
inline constexpr const char* kPackerEntries =
    "What the packer has made is to hold the file alone, under its name %1, and holds: %2.";
inline constexpr const char* kPackerNewFormat =
    "The packer has made an archive of RAR 5, and the description asks for RAR4.";
inline constexpr const char* kPackerGivenUp = "Not packed, because the packer fails.";

}  // namespace publish::texts
