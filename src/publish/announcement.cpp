#include "publish/announcement.h"

#include <array>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/path_guard.h"
#include "foundation/version.h"
#include "packages/signature_name.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "publish/file_tree.h"
#include "publish/release_names.h"

namespace publish {
namespace {

// Updaters read numbers of up to 18 digits; what is left is for renewals.
constexpr std::int64_t kMostSerial = 1'000'000'000'000'000;

// The digest that is in place.
struct Present {
  bool is_there = false;
  Digest digest;
  Faults faults;
};

Present ReadPresent(const std::string& root) {
  Present present;
  const std::string file = tmw::JoinPath(root, tmw::names::kDigestFile);
  present.is_there = tmw::IsFileExists(file);
  if (present.is_there) present.digest = ReadDigest(tmw::ReadFileToString(file), present.faults);
  return present;
}

std::array<std::int32_t, 4> NumbersOf(const std::string& version) {
  std::array<std::int32_t, 4> numbers{};
  std::int32_t count = 0;
  static_cast<void>(
      tmw::ParseVersionString(version, numbers[0], numbers[1], numbers[2], numbers[3], count));
  return numbers;
}

// The serial of the next signed digest; a fault if it cannot be known.
std::int64_t NextSerial(const Present& present, const Signer& signer, Faults& faults) {
  const std::int64_t announced =
      present.digest.signed_part ? present.digest.signed_part->serial : 0;
  const std::int64_t next = signer.GivenSerial().value_or(announced + 1);
  const bool is_known = present.faults.IsEmpty() || signer.GivenSerial();
  if (!is_known) {
    faults.Add(texts::kInDigest, texts::kSerialNotKnown);
  } else if (next <= announced) {
    faults.Add(texts::kInDigest, texts::kSerialNotHigher, {std::to_string(announced)});
  } else if (next > kMostSerial) {
    faults.Add(texts::kInDigest, texts::kSerialTooHigh, {std::to_string(kMostSerial)});
  }
  return next;
}

void CheckMayFollow(const Present& present, const Signer* signer, Faults& faults) {
  if (signer != nullptr) {
    NextSerial(present, *signer, faults);
  } else if (present.digest.signed_part) {
    faults.Add(texts::kInDigest, texts::kWasSigned);
  }
}

void CheckUnchanged(const std::string& folder, const std::string& name, std::int64_t length,
                    const std::string& hash, Faults& faults) {
  const std::string file = tmw::JoinPath(folder, name);
  if (!tmw::IsFileExists(file)) {
    faults.Add(file, texts::kNoSuchFile);
  } else if (tmw::GetFileLength(file) != length || HashOfFile(file) != hash) {
    faults.Add(file, texts::kChangedSincePublished);
  }
}

// The files that the digest itself vouches for must be on the disk as they are in it.
void CheckBound(const std::string& folder, Digest& digest, Faults& faults) {
  const std::string package(tmw::names::kManifestPackage);
  const std::string file = tmw::JoinPath(folder, package);
  // Digests of earlier versions of this program do not bind it.
  if (!digest.manifest && tmw::IsFileExists(file))
    digest.manifest = BoundManifest{tmw::GetFileLength(file), HashOfFile(file)};
  const BoundManifest bound = digest.manifest.value_or(BoundManifest{});
  CheckUnchanged(folder, package, bound.length, bound.hash, faults);
  for (const UpdaterFile& updater_file : digest.files) {
    if (tmw::CheckFileName(updater_file.name).IsAccepted())
      CheckUnchanged(folder, updater_file.name, updater_file.length, updater_file.hash, faults);
  }
}

// Puts the digest in place, signed if there is a signer.
Announcement Place(const std::string& root, Digest digest, const Signer* signer, Faults& faults) {
  const Present present = ReadPresent(root);
  CheckMayFollow(present, signer, faults);
  if (!faults.IsEmpty()) return {};
  digest.signed_part.reset();
  if (signer != nullptr) digest.signed_part = signer->PartOf(NextSerial(present, *signer, faults));
  const std::string bytes = Encoded(WriteDigest(digest), texts::kInDigest, faults);
  if (!faults.IsEmpty()) return {};
  const std::string file = tmw::JoinPath(root, tmw::names::kDigestFile);
  if (signer == nullptr) {
    ReplaceFile(file, bytes);
    return {digest.version, {}, {}};
  }
  const std::string signature = signer->Sign(digest, bytes);
  ReplaceFile(tmw::JoinPath(root, tmw::SignatureName(bytes)), signature);
  ReplaceFile(file, bytes);
  ReplaceFile(file + std::string(tmw::names::kSignatureEnding), signature);
  return {digest.version, digest.signed_part, signer->KeyId()};
}

// The digest that the release's folder keeps. Returns nothing and a fault if there is none.
std::optional<Digest> ReadKeptDigest(const std::string& folder, const std::string& version,
                                     Faults& faults) {
  const std::string file = tmw::JoinPath(folder, kAnnouncement);
  if (!tmw::IsFileExists(file)) {
    faults.Add(folder, texts::kNothingKept);
    return std::nullopt;
  }
  Digest digest = ReadDigest(tmw::ReadFileToString(file), faults);
  if (digest.version != version) faults.Add(file, texts::kKeptForOther, {digest.version});
  CheckBound(folder, digest, faults);
  return digest;
}

// The newest release of the folder that is older than that one; empty if there is none.
std::string FindOlder(const std::string& root, const std::string& version) {
  std::string found;
  const auto entries = ports::CurrentPorts().files->List(root);
  if (!entries) return found;
  const std::string prefix = ReleaseFolder("");
  for (const ports::FolderEntry& entry : entries.value) {
    if (!entry.name.starts_with(prefix)) continue;
    const std::string candidate = entry.name.substr(prefix.size());
    const bool is_release =
        IsVersion(candidate, 4) &&
        tmw::IsFileExists(tmw::JoinPath(tmw::JoinPath(root, entry.name), kAnnouncement));
    if (!is_release || !IsOlder(candidate, version)) continue;
    if (found.empty() || IsOlder(found, candidate)) found = candidate;
  }
  return found;
}

std::string FolderOf(const std::string& root, const std::string& version) {
  return tmw::JoinPath(root, ReleaseFolder(version));
}

}  // namespace

void KeepForAnnouncing(const std::string& release_folder, const std::string& digest,
                       const std::string& server_list) {
  WriteWholeFile(tmw::JoinPath(release_folder, kAnnouncement), digest);
  WriteWholeFile(tmw::JoinPath(release_folder, kServers), server_list);
}

void CheckMayAnnounce(const std::string& root, const Signer* signer, Faults& faults) {
  CheckMayFollow(ReadPresent(root), signer, faults);
}

AnnouncingLock::AnnouncingLock(const std::string& root) {
  if (!tmw::IsFolderExists(root)) Raise(texts::kNoFolder, root);
  lock_ = LockFile(tmw::JoinPath(root, kAnnouncingLock), texts::kAnotherAnnouncement, root);
}

KeptAnnouncement ReadKept(const std::string& root, const std::string& version, Faults& faults) {
  const std::string folder = FolderOf(root, version);
  std::optional<Digest> digest = ReadKeptDigest(folder, version, faults);
  if (!digest) return {};
  const std::string servers = tmw::JoinPath(folder, kServers);
  if (tmw::IsFileExists(servers)) return {std::move(*digest), tmw::ReadFileBytes(servers)};
  faults.Add(servers, texts::kNoSuchFile);
  return {};
}

Announcement Announce(const std::string& root, const std::string& version, const Signer* signer,
                      Faults& faults) {
  const KeptAnnouncement kept = ReadKept(root, version, faults);
  CheckMayAnnounce(root, signer, faults);
  if (!faults.IsEmpty()) return {};
  ReplaceFile(tmw::JoinPath(root, tmw::names::kServerListFile), kept.server_list);
  return Place(root, kept.digest, signer, faults);
}

void CheckNotOlder(const std::string& root, const std::string& version, const std::string& place,
                   Faults& faults) {
  const std::string announced = ReadPresent(root).digest.version;
  if (IsVersion(version, 4) && !announced.empty() && IsOlder(version, announced))
    faults.Add(place, texts::kNewerAnnounced, {announced});
}

Announcement Retract(const std::string& root, const Signer* signer, Faults& faults) {
  const std::string announced = ReadPresent(root).digest.version;
  const std::string older = announced.empty() ? "" : FindOlder(root, announced);
  if (older.empty()) {
    faults.Add(root, texts::kNothingToGoBackTo);
    return {};
  }
  const std::optional<Digest> digest = ReadKeptDigest(FolderOf(root, older), older, faults);
  return digest ? Place(root, *digest, signer, faults) : Announcement{};
}

Announcement Renew(const std::string& root, const Signer& signer, Faults& faults) {
  Present present = ReadPresent(root);
  if (present.digest.version.empty()) {
    faults.Add(root, texts::kNothingAnnounced);
    return {};
  }
  faults.Append(present.faults);
  CheckBound(FolderOf(root, present.digest.version), present.digest, faults);
  return Place(root, present.digest, &signer, faults);
}

bool IsOlder(const std::string& version, const std::string& other) {
  return NumbersOf(version) < NumbersOf(other);
}

std::string AnnouncedVersion(const std::string& root, Faults& faults) {
  const Present present = ReadPresent(root);
  if (!present.is_there) faults.Add(root, texts::kNothingAnnounced);
  faults.Append(present.faults);
  return present.digest.version;
}

bool IsAnnounced(const std::string& root, const std::string& version) {
  const Present present = ReadPresent(root);
  if (!present.is_there) return false;
  return present.digest.version.empty() || !IsOlder(present.digest.version, version);
}

std::string Encoded(const std::string& text, const std::string& place, Faults& faults) {
  const auto bytes = tmw::TryUtf8ToCodePage(tmw::CodePage::k1251, text);
  if (!bytes) faults.Add(place, texts::kOutsideCodePage);
  return bytes.value_or("");
}

}  // namespace publish
