#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "publish/faults.h"

// Scripts that bring a database from one version to the next.
namespace publish {

// Major, minor, build.
using DatabaseVersion = std::array<std::int32_t, 3>;

struct UpdateScript {
  std::string file;  // without its folder
  std::string from_text;
  DatabaseVersion from{};
  DatabaseVersion to{};
};

// The scripts of this product among the "*.xml" files of a folder, in the order of names. What the
// updater would refuse is a fault; another product's script is passed over, as the updater does.
std::vector<UpdateScript> ReadScripts(const std::string& folder, Faults& faults);

// Whether every database that a script leads to, and one of the version oldest (unless that is
// empty), reaches the release's version. The version has four numbers; the first three count.
void CheckChain(const std::vector<UpdateScript>& scripts, const std::string& oldest,
                const std::string& release_version, Faults& faults);

std::string VersionText(const DatabaseVersion& version);

}  // namespace publish
