#pragma once

#include <curl/curl.h>

#include "platform/outcome.h"

// libcurl's results as the codes of the internet layer, numbered as WinINet numbers them.
namespace platform::internet_codes {

inline constexpr SystemCode kTimeout = 12002;
inline constexpr SystemCode kExtendedError = 12003;  // the server refused what was asked
inline constexpr SystemCode kInternalError = 12004;
inline constexpr SystemCode kInvalidUrl = 12005;
inline constexpr SystemCode kUnrecognizedScheme = 12006;
inline constexpr SystemCode kNameNotResolved = 12007;
inline constexpr SystemCode kLoginFailure = 12015;
inline constexpr SystemCode kInvalidOperation = 12016;
inline constexpr SystemCode kWrongRequestType = 12018;
inline constexpr SystemCode kCannotConnect = 12029;
inline constexpr SystemCode kConnectionAborted = 12030;
inline constexpr SystemCode kConnectionReset = 12031;
inline constexpr SystemCode kCertificateDate = 12037;
inline constexpr SystemCode kCertificateName = 12038;
inline constexpr SystemCode kHttpsToHttpRedirect = 12040;
inline constexpr SystemCode kCertificateAuthority = 12045;
inline constexpr SystemCode kInvalidServerResponse = 12152;
inline constexpr SystemCode kRedirectFailed = 12156;
inline constexpr SystemCode kSecurityChannelError = 12157;
inline constexpr SystemCode kProxyUnreachable = 12165;
inline constexpr SystemCode kCertificateInvalid = 12169;
inline constexpr SystemCode kCertificateRevoked = 12170;

// The code of an ended transfer that did not succeed; the handle tells what the result leaves open
// (which fault the certificate had, what the proxy answered).
SystemCode FromCurl(CURLcode result, CURL* easy);

}  // namespace platform::internet_codes
