#pragma once

#include <string>

#include "engine/records.h"

// What a run has found out, for the log.
namespace tmw {

// installed may be empty: not known.
void RecordVersions(const Digest& digest, const std::string& installed);

void RecordManifest(const std::string& loading_url, const Manifest& manifest);

// Each component that is to be replaced, then the sums.
void RecordNeed(const Manifest& manifest, const UpdateNeed& need);

}  // namespace tmw
