#pragma once

#include <string>

#include "foundation/contract_names.h"

// Where things lie in the folder that a web server offers.
namespace publish {

// The folder of a release.
inline std::string ReleaseFolder(const std::string& version) {
  return std::string(tmw::names::kProductCode) + "_" + version;
}

// Names in the folder of a release that only this tool gives.
inline const std::string kScriptsPackage = "_DBUpdates" + std::string(tmw::names::kPackageEnding);
inline const std::string kStructuresPackage = "_DBStruct" + std::string(tmw::names::kPackageEnding);
inline constexpr const char* kFilesFolder = "files";
inline constexpr const char* kListing = "_Listing.txt";

// Names go into addresses as they are.
inline bool FitsAddresses(const std::string& name) {
  return name.find_first_of("#%?") == std::string::npos;
}

}  // namespace publish
