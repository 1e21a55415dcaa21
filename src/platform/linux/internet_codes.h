#pragma once

#include <curl/curl.h>

#include "ports/internet.h"

// libcurl's results as the codes of the internet layer, numbered as WinINet numbers them.
namespace platform::internet_codes {

inline constexpr ports::SystemCode kExtendedError = 12003;  // the server refused what was asked
inline constexpr ports::SystemCode kInternalError = 12004;
inline constexpr ports::SystemCode kInvalidUrl = 12005;
inline constexpr ports::SystemCode kUnrecognizedScheme = 12006;
inline constexpr ports::SystemCode kLoginFailure = 12015;
inline constexpr ports::SystemCode kInvalidOperation = 12016;
inline constexpr ports::SystemCode kWrongRequestType = 12018;
inline constexpr ports::SystemCode kCertificateDate = 12037;
inline constexpr ports::SystemCode kCertificateName = 12038;
inline constexpr ports::SystemCode kHttpsToHttpRedirect = 12040;
inline constexpr ports::SystemCode kCertificateAuthority = 12045;
inline constexpr ports::SystemCode kInvalidServerResponse = 12152;
inline constexpr ports::SystemCode kRedirectFailed = 12156;
inline constexpr ports::SystemCode kSecurityChannelError = 12157;
inline constexpr ports::SystemCode kProxyUnreachable = 12165;
inline constexpr ports::SystemCode kCertificateInvalid = 12169;
inline constexpr ports::SystemCode kCertificateRevoked = 12170;

// The code of an ended transfer that did not succeed; the handle has the details (what is wrong
// with the certificate, what the proxy answered).
ports::SystemCode FromCurl(CURLcode result, CURL* easy);

}  // namespace platform::internet_codes
