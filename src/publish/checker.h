#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "publish/digest.h"
#include "publish/faults.h"
#include "publish/manifest.h"
#include "publish/rehearsal.h"
#include "publish/release_source.h"
#include "signature/public_key.h"
#include "tools/progress.h"

namespace publish {

struct CheckOptions {
  std::string oldest_database;              // see CheckChain
  std::optional<signature::PublicKey> key;  // of an updater that demands signatures
  std::vector<std::string> tries;           // databases of users, to rehearse the update on
};

struct CheckedRelease {
  std::string version;      // empty if the digest has none
  Digest digest;            // with the manifest that it binds, or should
  std::string server_list;  // the text
  std::size_t files = 0;
  std::size_t tables = 0;
  std::int64_t volume = 0;                // bytes a first installation downloads
  std::optional<SignedPart> signed_part;  // with a key, if the signature is good
  std::string trusted_comment;            // likewise
  std::vector<TriedDatabase> tried;       // none if there are other faults
};

// Reads the release that a server announces as the updater will: digest, server list, manifest,
// then every component, which is unpacked and verified. Reports all faults, in the order of the
// manifest.
CheckedRelease CheckRelease(const std::string& place, const CheckOptions& options,
                            tools::Progress& progress, Faults& faults);

// Reads the manifest of a release; place is the release's folder or the server that announces it.
// Returns false if there is no readable manifest, which is a fault.
bool LoadManifest(const std::string& place, Manifest& manifest, Faults& faults);

}  // namespace publish
