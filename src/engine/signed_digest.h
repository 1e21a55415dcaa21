#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/records.h"
#include "services/updater_events.h"
#include "signature/public_key.h"

// The digest of an updater that demands signatures. The signature's file lies beside the digest and
// is named by the digest's hash, so that no updater can meet a pair that does not match:
// "TMW_version.dat.<first 16 digits of the SHA-256>.minisig".
namespace tmw {

// Loads digest and signature from the first server, or both from the second one if the first pair
// is not good, and judges what is signed. Nothing else is asked of the servers. local: where the
// digest goes, and the signature behind it. Returns false if there is no good digest, which has
// been reported, or if the user has cancelled.
bool FetchSignedDigest(UpdaterEvents& events, const UpdateServers& servers,
                       const std::string& product_code,
                       const std::vector<signature::PublicKey>& keys, const std::string& local,
                       std::string& text);

// Judges a digest whose signature is good: whose it is, whether it is older than one that was
// accepted before, whether it has expired. now: seconds since 1970, UTC. Returns false with the
// reason; serial becomes the digest's.
[[nodiscard]] bool TryJudgeDigest(const std::string& text, const std::string& product_code,
                                  std::int64_t highest_serial, std::int64_t now,
                                  std::int64_t& serial, std::string& reason);

}  // namespace tmw
