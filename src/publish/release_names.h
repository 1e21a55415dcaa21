#pragma once

#include <string>

#include "foundation/contract_names.h"

// Names in the folder that a web server offers.
namespace publish {

// The folder of a release.
inline std::string ReleaseFolder(const std::string& version) {
  return std::string(tmw::names::kProductCode) + "_" + version;
}

// Names in the folder of a release that this tool chooses; the updater finds them in the manifest.
inline const std::string kScriptsPackage = "_DBUpdates" + std::string(tmw::names::kPackageEnding);
inline const std::string kStructuresPackage = "_DBStruct" + std::string(tmw::names::kPackageEnding);
inline constexpr const char* kFilesFolder = "files";
inline constexpr const char* kListing = "_Listing.txt";
inline constexpr const char* kAnnouncement = "_Announcement.txt";   // the digest, not signed
inline constexpr const char* kAnnouncingLock = "_Announcing.lock";  // in the root
inline constexpr const char* kServers = "_Servers.txt";             // the list of servers

// Returns whether a name can be part of an address: the updater does not escape it.
inline bool FitsAddresses(const std::string& name) {
  return name.find_first_of("#%?") == std::string::npos;
}

}  // namespace publish
