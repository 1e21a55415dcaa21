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
  std::string place;  // file and line of its root element, for faults
  std::string from_text;
  DatabaseVersion from{};
  DatabaseVersion to{};
};

// Reads this product's scripts among the "*.xml" files of a folder, in the order of names. What the
// updater would refuse is a fault; scripts of other products are skipped, as the updater does.
std::vector<UpdateScript> ReadScripts(const std::string& folder, Faults& faults);

// Checks that every version that a script leads to, and the version `oldest` unless that is empty,
// is updated to the release's version (the first three of its four numbers), and not beyond.
void CheckChain(const std::vector<UpdateScript>& scripts, const Located& oldest,
                const std::string& release_version, Faults& faults);

std::string VersionText(const DatabaseVersion& version);

}  // namespace publish
