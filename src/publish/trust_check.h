#pragma once

#include <string>

#include "publish/checker.h"
#include "publish/digest.h"
#include "publish/faults.h"
#include "publish/release_source.h"

namespace publish {

// Judges a digest with these bytes as an updater with the key does. What it would refuse is a
// fault; what it will refuse soon is a warning.
void CheckTrust(ReleaseSource& source, const std::string& bytes, const Digest& digest,
                const signature::PublicKey& key, CheckedRelease& release, Faults& faults);

// Warns of servers whose answers anybody on the way can replace, if nothing binds them.
void WarnOfOpenServers(const std::string& server_list, const Digest& digest, Faults& faults);

}  // namespace publish
