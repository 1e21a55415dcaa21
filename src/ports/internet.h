#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "ports/outcome.h"

namespace ports {

// How a session reaches the network; the numbers are WinINet's.
enum InternetAccess : std::int32_t {
  kAccessPreconfigured = 0,  // the system's settings; Linux: the proxy environment variables
  kAccessDirect = 1,
  kAccessProxy = 3,  // the named proxy
};

struct InternetSessionOptions {
  std::string agent;
  std::int32_t access_type = kAccessPreconfigured;  // Linux: any unknown number counts as 0
  // Access type 3 only. WinINet's lists: "host:port" or "http=host:port;ftp=host:port", and host
  // masks ("*.local;<local>") that are reached directly.
  std::string proxy;
  std::string proxy_bypass;
  std::uint32_t flags = 0;  // the session's own flags; nothing on Linux
};

// Called about every tenth of a second while an opening or a seek waits for the server; Windows:
// also when the windows have something to process. If it returns false, the waiting call fails with
// kInternetCancelled. It may throw; the exception passes through the waiting call.
using WaitHandler = std::function<bool()>;

// Codes of the internet layer that its users tell apart, numbered as WinINet numbers them.
inline constexpr SystemCode kInternetTimeout = 12002;
inline constexpr SystemCode kInternetNameNotResolved = 12007;
inline constexpr SystemCode kInternetCancelled = 12017;
inline constexpr SystemCode kInternetWrongState = 12019;
inline constexpr SystemCode kInternetCannotConnect = 12029;
inline constexpr SystemCode kInternetAborted = 12030;
inline constexpr SystemCode kInternetReset = 12031;

// A flag of an opening, numbered as WinINet numbers it: the server is asked, whatever a cache
// holds. Linux has no cache.
inline constexpr std::uint32_t kInternetReload = 0x80000000;

// The result of a read. Length 0 without is_end means that nothing has arrived yet, after a wait of
// at most about a tenth of a second.
struct InternetChunk {
  std::uint32_t length = 0;
  bool is_end = false;  // of the body; length is then 0
};

// One opened URL. Failures carry codes of the internet layer (12001 and above) or system codes.
// Destroying a request closes it. One thread.
class InternetRequest {
 public:
  virtual ~InternetRequest() = default;

  // Reads up to length bytes of the body as the server sent them; nothing is decompressed. A body
  // that ends before its announced length is a failure. Callers measure the server's silence.
  virtual Outcome<InternetChunk> Read(void* buffer, std::uint32_t length) = 0;

  // Moves to a position counted from the beginning of the body. After a failure the request must be
  // opened anew. Moving to the current position costs nothing. A success means that the server
  // sends the body from there, not only that it might.
  virtual Status Seek(std::int32_t position, const WaitHandler& on_wait) = 0;

  // The length of the whole body in bytes as the answer to the opening announced it; -1 if it did
  // not.
  virtual std::int64_t WholeLength() = 0;

  // The answer's status and reason phrase (UTF-8); a failure for a request that is not HTTP.
  virtual Outcome<std::int32_t> HttpStatusCode() = 0;
  virtual Outcome<std::string> HttpStatusText() = 0;

  // At most one successful close.
  virtual Status Close() = 0;
};

// The settings and connections that requests share. Destroying a session closes it.
class InternetSession {
 public:
  virtual ~InternetSession() = default;

  // Sends the request (http, https or ftp) and waits for the server's answer, following redirects:
  // a limited number, never from https to http. An HTTP error status is a success here; its body is
  // never read. The context value (an address) and the flags are WinINet's; on Windows those that
  // every transfer needs are added.
  virtual Outcome<std::unique_ptr<InternetRequest>> OpenUrl(const std::string& url,
                                                            std::uint32_t flags,
                                                            std::uintptr_t context,
                                                            const WaitHandler& on_wait) = 0;

  virtual Status Close() = 0;
};

// Windows: WinINet, ANSI entry points, on a thread of its own for each opened URL. Linux: libcurl;
// the certificates are the system's, or what CURL_CA_BUNDLE, SSL_CERT_FILE or SSL_CERT_DIR name.
class Internet {
 public:
  virtual ~Internet() = default;

  // Sessions may outlive the port.
  virtual Outcome<std::unique_ptr<InternetSession>> OpenSession(
      const InternetSessionOptions& options) = 0;
};

// A server that stays silent for this long has stalled.
inline constexpr std::int32_t kInternetStallLimit = 60'000;  // milliseconds

}  // namespace ports
