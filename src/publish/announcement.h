#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ports/file_lock.h"
#include "publish/digest.h"
#include "publish/faults.h"
#include "publish/signer.h"

// The digest in the root of a server's folder: which of the releases there is announced. A signed
// announcement consists of three files, put in place in this order: the signature under the name
// that holds the digest's hash, the digest, and a copy of the signature for people.
namespace publish {

struct Announcement {
  std::string version;  // empty if nothing has been announced
  std::optional<SignedPart> signed_part;
  std::string key_id;  // of a signed one
};

// Keeps in a release's folder what its announcement needs. Both are the bytes of files.
void KeepForAnnouncing(const std::string& release_folder, const std::string& digest,
                       const std::string& server_list);

// Checks what can be checked before a release is built: signed announcements are followed by signed
// ones only, with a higher serial. signer: null for none.
void CheckMayAnnounce(const std::string& root, const Signer* signer, Faults& faults);

// What the folder of a release keeps for its announcement. Whatever is missing or has been changed
// since it was published is a fault.
struct KeptAnnouncement {
  Digest digest;
  std::string server_list;  // the bytes
};
KeptAnnouncement ReadKept(const std::string& root, const std::string& version, Faults& faults);

// Keeps other runs from announcing in that folder, until it is destroyed. Whoever calls Announce,
// Retract or Renew, or takes releases away, holds it from the first look at the digest on.
class AnnouncingLock {
 public:
  // Raises if there is no such folder or another run has locked it.
  explicit AnnouncingLock(const std::string& root);

 private:
  std::unique_ptr<ports::FileLock> lock_;
};

// Announces a release that is there, and its list of servers. Nothing is announced if there are
// faults: its manifest and the updater's files must be those that were published.
Announcement Announce(const std::string& root, const std::string& version, const Signer* signer,
                      Faults& faults);

// Checks that a version is not below the announced one: users would keep what they have.
void CheckNotOlder(const std::string& root, const std::string& version, const std::string& place,
                   Faults& faults);

// Announces the newest release that is older than the announced one. The list of servers stays.
Announcement Retract(const std::string& root, const Signer* signer, Faults& faults);

// Announces the announced release once more: a new signature, serial and last day.
Announcement Renew(const std::string& root, const Signer& signer, Faults& faults);

// Returns whether a version of four numbers is below another.
bool IsOlder(const std::string& version, const std::string& other);

// The version that the digest in the folder announces. What keeps it from being read is a fault.
std::string AnnouncedVersion(const std::string& root, Faults& faults);

// Returns whether users may be downloading that release: the digest announces it or a later one, or
// cannot be read. A release that a killed run has not announced may be replaced.
bool IsAnnounced(const std::string& root, const std::string& version);

// Text in code page 1251, which the updater assumes without a byte-order mark. What does not fit is
// a fault.
std::string Encoded(const std::string& text, const std::string& place, Faults& faults);

}  // namespace publish
