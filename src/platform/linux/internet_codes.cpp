#include "platform/linux/internet_codes.h"

#include <cerrno>

namespace platform::internet_codes {
namespace {

// OpenSSL's verdicts on a certificate, X509_V_... in its x509_vfy.h.
enum Verdict : long {
  kOk = 0,
  kNotYetKnown = 1,  // where libcurl starts from
  kUnableToGetIssuer = 2,
  kNotYetValid = 9,
  kHasExpired = 10,
  kSelfSigned = 18,
  kSelfSignedInChain = 19,
  kUnableToGetIssuerLocally = 20,
  kUnableToVerifyLeaf = 21,
  kRevoked = 23,
  kHostNameMismatch = 62,
  kAddressMismatch = 64,
};

ports::SystemCode FromCertificate(CURL* easy) {
  long verdict = kOk;
  curl_easy_getinfo(easy, CURLINFO_SSL_VERIFYRESULT, &verdict);
  switch (verdict) {
    // No fault of the chain; libcurl compares the host's name before it asks for the verdict.
    case kOk:
    case kNotYetKnown:
    case kHostNameMismatch:
    case kAddressMismatch:
      return kCertificateName;
    case kHasExpired:
    case kNotYetValid:
      return kCertificateDate;
    case kUnableToGetIssuer:
    case kSelfSigned:
    case kSelfSignedInChain:
    case kUnableToGetIssuerLocally:
    case kUnableToVerifyLeaf:
      return kCertificateAuthority;
    case kRevoked:
      return kCertificateRevoked;
    default:
      return kCertificateInvalid;
  }
}

// A broken connection: the proxy may have refused the tunnel before.
ports::SystemCode FromBrokenConnection(CURL* easy) {
  constexpr long kProxyWantsLogin = 407;
  constexpr long kFirstErrorStatus = 400;
  long proxy_status = 0;
  curl_easy_getinfo(easy, CURLINFO_HTTP_CONNECTCODE, &proxy_status);
  if (proxy_status == kProxyWantsLogin) return kLoginFailure;
  return proxy_status >= kFirstErrorStatus ? kProxyUnreachable : ports::kInternetReset;
}

}  // namespace

ports::SystemCode FromCurl(CURLcode result, CURL* easy) {
  switch (result) {
    case CURLE_URL_MALFORMAT:
      return kInvalidUrl;
    case CURLE_COULDNT_RESOLVE_HOST:
      return ports::kInternetNameNotResolved;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_PROXY:
      return kProxyUnreachable;
    case CURLE_COULDNT_CONNECT:
    case CURLE_FTP_CANT_GET_HOST:
      return ports::kInternetCannotConnect;
    case CURLE_LOGIN_DENIED:
      return kLoginFailure;
    case CURLE_REMOTE_ACCESS_DENIED:
    case CURLE_REMOTE_FILE_NOT_FOUND:
    case CURLE_FTP_COULDNT_RETR_FILE:
    case CURLE_FTP_COULDNT_SET_TYPE:
    case CURLE_QUOTE_ERROR:
      return kExtendedError;
    case CURLE_FTP_COULDNT_USE_REST:
    case CURLE_BAD_DOWNLOAD_RESUME:
    case CURLE_RANGE_ERROR:
      return kInvalidOperation;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
      return ports::kInternetAborted;
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
      return FromBrokenConnection(easy);
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_FTP_ACCEPT_TIMEOUT:
      return ports::kInternetTimeout;
    case CURLE_UNSUPPORTED_PROTOCOL:  // AcceptUrl has checked the scheme: it is the answer
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_HTTP2:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_FTP_WEIRD_PASS_REPLY:
    case CURLE_FTP_WEIRD_PASV_REPLY:
    case CURLE_FTP_WEIRD_227_FORMAT:
      return kInvalidServerResponse;
    case CURLE_PEER_FAILED_VERIFICATION:
      return FromCertificate(easy);
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_USE_SSL_FAILED:
      return kSecurityChannelError;
    case CURLE_OUT_OF_MEMORY:
      return ENOMEM;
    default:
      return kInternalError;
  }
}

}  // namespace platform::internet_codes
