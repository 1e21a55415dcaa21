#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "publish/faults.h"

namespace publish {

struct PrunedRelease {
  std::string version;
  std::int64_t bytes = 0;
};

// Removes old releases from a server's folder: the announced one, the keep - 1 releases before it
// and all newer ones stay, and signatures as well. Each folder gets another name before it is
// emptied, so that a run that is killed leaves no half of a release. Returns the removed ones, or
// with is_dry those that would be, newest first; none if there are faults. The caller holds the
// AnnouncingLock.
std::vector<PrunedRelease> Prune(const std::string& root, std::size_t keep, bool is_dry,
                                 Faults& faults);

}  // namespace publish
