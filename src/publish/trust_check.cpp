#include "publish/trust_check.h"

#include <optional>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "foundation/utc_day.h"
#include "packages/signature_name.h"
#include "publish/fault_texts.h"
#include "publish/signer.h"
#include "signature/verification.h"

namespace publish {
namespace {

constexpr std::int64_t kSoon = 30;  // days

std::optional<std::string> FetchBytes(ReleaseSource& source, const std::string& name,
                                      std::string& reason) {
  const auto fetched = source.Fetch(name, signature::kMaxSignatureFile, reason);
  if (fetched == nullptr) return std::nullopt;
  return tmw::ReadFileBytes(fetched->Path());
}

// Returns whether the signature is good; else why not is a fault.
bool IsGood(const signature::Verification& result, const std::string& place, Faults& faults) {
  switch (result.verdict) {
    case signature::Verdict::kGood:
      return true;
    case signature::Verdict::kMalformed:
      faults.Add(place, texts::kSignatureMalformed);
      break;
    case signature::Verdict::kOtherKind:
      faults.Add(place, texts::kSignatureOfOtherKind);
      break;
    case signature::Verdict::kUnknownKey:
      faults.Add(place, texts::kSignedByOther, {signature::KeyIdText(result.key_id)});
      break;
    case signature::Verdict::kDiffers:
      faults.Add(place, texts::kSignatureDiffers);
      break;
  }
  return false;
}

void CheckSignedPart(const Digest& digest, const std::string& place, Faults& faults) {
  if (!digest.signed_part || !digest.manifest) {
    faults.Add(place, texts::kSignedLinesMissing);
    return;
  }
  const SignedPart& part = *digest.signed_part;
  if (part.product != tmw::names::kProductCode)
    faults.Add(place, texts::kSignedForOther, {part.product});
  const std::string last_day = tmw::UtcDayText(part.last_day);
  if (Today() > part.last_day) {
    faults.Add(place, texts::kExpired, {last_day});
  } else if (Today() + kSoon >= part.last_day) {
    faults.Warn(place, texts::kExpiresSoon, {last_day});
  }
}

}  // namespace

void CheckTrust(ReleaseSource& source, const std::string& bytes, const Digest& digest,
                const signature::PublicKey& key, CheckedRelease& release, Faults& faults) {
  const std::string place(tmw::names::kDigestFile);
  const std::string name = tmw::SignatureName(bytes);
  std::string reason;
  const auto signature = FetchBytes(source, name, reason);
  if (!signature) {
    faults.Add(place, texts::kNoSignature, {name, reason});
    return;
  }
  const signature::Verification result = signature::Verify(bytes, *signature, {key});
  if (!IsGood(result, place, faults)) return;
  CheckSignedPart(digest, place, faults);
  release.signed_part = digest.signed_part;
  release.trusted_comment = result.trusted_comment;
  const std::string copy = place + std::string(tmw::names::kSignatureEnding);
  if (FetchBytes(source, copy, reason) != signature) faults.Warn(copy, texts::kCopyDiffers);
}

void WarnOfOpenServers(const std::string& server_list, const Digest& digest, Faults& faults) {
  if (digest.manifest) return;
  std::size_t servers = 0;
  std::size_t open = 0;
  for (const std::string& line : tmw::Split(server_list, tmw::kCrLf)) {
    const std::string server = tmw::LowerCase(tmw::Trim(line));
    if (server.empty()) continue;
    ++servers;
    if (!server.starts_with("https://")) ++open;
  }
  if (open == 0) return;
  faults.Warn(std::string(tmw::names::kServerListFile), texts::kOpenServers,
              {std::to_string(open), std::to_string(servers)});
}

}  // namespace publish
