#include "services/advice.h"

#include <cstdint>
#include <string>
#include <utility>

#include "ports/database_types.h"
#include "ports/error_texts.h"
#include "ports/internet.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "ports/system_info.h"
#include "services/advice_texts.h"
#include "services/run_log.h"
#include "services/updater_settings.h"

namespace tmw {
namespace {

FailureKind& Noted() {
  static FailureKind kind = FailureKind::kOther;
  return kind;
}

// Numbers of the internet layer; 0: none of those with advice of their own.
FailureKind KindOfInternetCode(std::int32_t code) {
  switch (code) {
    case 12002:  // time-out
    case 12030:  // connection aborted
    case 12031:  // connection reset
    case 12152:  // invalid server response
      return FailureKind::kInterrupted;
    case 12007:
      return FailureKind::kNameNotResolved;
    case 12014:  // password refused
    case 12015:  // login refused
      return FailureKind::kLogin;
    case 12029:
      return FailureKind::kNoConnection;
    case 12037:
      return FailureKind::kCertificateDate;
    case 12038:  // another name
    case 12044:  // the server wants a certificate
    case 12057:  // revocation cannot be checked
    case 12169:  // invalid
    case 12170:  // revoked
    case 12175:  // any fault of the certificate
      return FailureKind::kCertificate;
    case 12045:
      return FailureKind::kUnknownAuthority;
    case 12157:
      return FailureKind::kNoSecureChannel;
    case 12165:
      return FailureKind::kProxy;
    default:
      return FailureKind::kOther;
  }
}

FailureKind KindOfDatabaseNumber(std::int32_t number) {
  switch (number) {
    case 3006:  // locked exclusively
    case ports::kFileAlreadyInUse:
    case 3196:  // in use by another person or process
    case ports::kOpenedExclusively:
    case 3704:  // opened by a user on some machine
    case 3734:  // kept from being opened by one
      return FailureKind::kDatabaseHeld;
    case 3024:  // no such file
    case 3044:  // no such folder
      return FailureKind::kDatabaseMissing;
    case ports::kDiskFull:
    case 3183:  // no room for temporary files
      return FailureKind::kDiskFull;
    default:
      return FailureKind::kOther;
  }
}

// Windows 7 knows the newer protocols, but does not use them by itself.
std::string ForOldWindows(std::string sentence) {
  constexpr std::uint32_t kNtLine = 2;
  const auto os = ports::CurrentPorts().system_info->Os();
  if (!os || os->platform != kNtLine || os->major != 6 || os->minor > 1) return sentence;
  sentence.pop_back();
  return sentence + advice_texts::kOldProtocols;
}

std::string ProxyName() {
  return WithoutPasswords(GetUpdaterSettings().ProxyServer);
}

}  // namespace

std::string AdviceFor(FailureKind kind) {
  namespace texts = advice_texts;
  const std::string proxy = ProxyName();
  switch (kind) {
    case FailureKind::kNoConnection:
      return ForOldWindows(proxy.empty() ? texts::kNoConnection
                                         : texts::NoConnectionThrough(proxy));
    case FailureKind::kNoSecureChannel:
      return ForOldWindows(texts::kNoSecureChannel);
    case FailureKind::kUnknownAuthority:
      return texts::kUnknownAuthority;
    case FailureKind::kNameNotResolved:
      return proxy.empty() ? texts::kNameNotResolved : texts::NoConnectionThrough(proxy);
    case FailureKind::kProxy:
      return texts::ProxyFailed(proxy);
    case FailureKind::kProxyLogin:
      return texts::ProxyWantsLogin(proxy);
    case FailureKind::kInterrupted:
      return texts::kInterrupted;
    case FailureKind::kCertificateDate:
      return texts::kCertificateDate;
    case FailureKind::kCertificate:
      return texts::kCertificate;
    case FailureKind::kLoginPage:
      return texts::kLoginPage;
    case FailureKind::kLogin:
      return texts::kLogin;
    case FailureKind::kForbidden:
      return texts::kForbidden;
    case FailureKind::kNotFound:
      return texts::kNotFound;
    case FailureKind::kServerFault:
      return texts::kServerFault;
    case FailureKind::kRefused:
      return texts::kRefused;
    case FailureKind::kDamagedFile:
      return texts::kDamagedFile;
    case FailureKind::kWrongData:
      return texts::kWrongData;
    case FailureKind::kDiskFull:
      return texts::kDiskFull;
    case FailureKind::kNoRights:
      // Where programs have no ending there are commands that give rights.
      return ports::CurrentPorts().processes->ProgramEnding().empty() ? texts::kNoRightsOnLinux
                                                                      : texts::kNoRights;
    case FailureKind::kFileHeld:
      return texts::kFileHeld;
    case FailureKind::kOwnFiles:
      return texts::kOwnFiles;
    case FailureKind::kSetting:
      return texts::kSetting;
    case FailureKind::kDatabaseHeld:
      return texts::kDatabaseHeld;
    case FailureKind::kDatabase:
      return texts::kDatabase;
    case FailureKind::kScript:
      return texts::kScript;
    case FailureKind::kVanished:
      return texts::kVanished;
    case FailureKind::kCommandLine:
      return texts::kCommandLine;
    case FailureKind::kNetworkInstallation:
      return texts::kNetworkInstallation;
    case FailureKind::kDatabaseMissing:
      return texts::kDatabaseMissing;
    case FailureKind::kBackup:
      return texts::kBackup;
    case FailureKind::kVersions:
      return texts::kVersions;
    case FailureKind::kSignature:
      return texts::kSignature;
    case FailureKind::kRegistration:
      return texts::kRegistration;
    case FailureKind::kByHand:
      return texts::kByHand;
    case FailureKind::kOther:
      break;
  }
  return texts::kOther;
}

FailureKind KindOfNumber(std::int32_t number) {
  if (const FailureKind kind = KindOfInternetCode(number); kind != FailureKind::kOther) return kind;
  if (const FailureKind kind = KindOfDatabaseNumber(number); kind != FailureKind::kOther)
    return kind;
  const ports::ErrorTexts* const system = ports::CurrentPorts().error_texts;
  if (system == nullptr) return FailureKind::kOther;
  switch (system->MeaningOf(number)) {
    case ports::CodeMeaning::kNoSpace:
      return FailureKind::kDiskFull;
    case ports::CodeMeaning::kNoRights:
      return FailureKind::kNoRights;
    case ports::CodeMeaning::kHeld:
      return FailureKind::kFileHeld;
    case ports::CodeMeaning::kOther:
      break;
  }
  return FailureKind::kOther;
}

FailureKind KindOfStatus(std::int32_t status) {
  switch (status) {
    case 401:
      return FailureKind::kLogin;
    case 403:
    case 451:
      return FailureKind::kForbidden;
    case 404:
    case 410:
      return FailureKind::kNotFound;
    case 407:
      return FailureKind::kProxyLogin;
    default:
      return status >= 500 ? FailureKind::kServerFault : FailureKind::kRefused;
  }
}

void NoteFailure(FailureKind kind) {
  Noted() = kind;
}

FailureKind TakeNotedFailure() {
  return std::exchange(Noted(), FailureKind::kOther);
}

}  // namespace tmw
