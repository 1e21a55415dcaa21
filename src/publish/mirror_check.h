#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "publish/digest.h"
#include "publish/faults.h"
#include "tools/progress.h"

// The servers of the list, each of which users may be sent to: does it have the release, whole?
namespace publish {

struct MirrorState {
  std::string server;
  std::string unreached;  // why the server cannot be reached; empty if it can
  Faults faults;
  std::size_t checked = 0;     // files and dictionaries
  std::size_t components = 0;  // of the release

  bool IsWhole() const { return unreached.empty() && faults.IsEmpty(); }
};

// Reads the release that the digest announces from every server of the list, as updaters that are
// sent there will: manifest, the updater's files, both packages, and all files and dictionaries, or
// that many of them, chosen at random.
std::vector<MirrorState> CheckMirrors(const Digest& digest, const std::string& server_list,
                                      std::optional<std::size_t> sample, tools::Progress& progress);

}  // namespace publish
