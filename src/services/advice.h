#pragma once

#include <cstdint>
#include <string>

// What a user can do after a failure: one sentence for each kind of failure. It is shown apart from
// the message, below it.
namespace tmw {

enum class FailureKind {
  kOther,
  // Of the network.
  kNoConnection,
  kNameNotResolved,
  kProxy,       // cannot be reached, or refuses
  kProxyLogin,  // status 407
  kInterrupted,
  kCertificateDate,
  kCertificate,
  kNoSecureChannel,   // client and server know no common protocol
  kUnknownAuthority,  // has issued the certificate
  kLoginPage,         // a page of the network came instead of a file
  // What the server answered.
  kLogin,      // status 401
  kForbidden,  // status 403
  kNotFound,   // status 404
  kServerFault,
  kRefused,  // any other status of failure
  kDamagedFile,
  kSignature,  // of the digest, or what it signs
  kWrongData,  // files of the server that contradict each other or have errors
  // Of this computer.
  kDiskFull,
  kNoRights,
  kFileHeld,
  kVanished,      // a file that was there a moment ago
  kOwnFiles,      // a file of the updater or of the product is missing
  kRegistration,  // of a component in the system
  kSetting,
  kCommandLine,
  kNetworkInstallation,
  // Of the database.
  kDatabaseHeld,
  kDatabaseMissing,
  kDatabase,
  kBackup,
  kScript,
  // Automatic updating has come to its end.
  kByHand,
  kVersions,  // the installed version cannot be updated to the offered one
};

// Complete sentences; the proxy is named if the settings name one.
std::string AdviceFor(FailureKind kind);

// The kind that goes with the number of an error, which may be of the system, of the internet layer
// or of the database; kOther if the number says nothing about it.
FailureKind KindOfNumber(std::int32_t number);

// The kind that goes with an HTTP status from 400 to 599.
FailureKind KindOfStatus(std::int32_t status);

// For a failure whose message reaches the user without its number: what notes it knows the kind,
// and the box that reports it takes the kind from here. A later success takes the note back by
// noting kOther.
void NoteFailure(FailureKind kind);

// The kind noted since the last call.
FailureKind TakeNotedFailure();

}  // namespace tmw
