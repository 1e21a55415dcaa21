#include "transfer/inet_connection.h"

#include "foundation/api_errors.h"
#include "foundation/error_handling.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr const char* kModule = "InetConnection";

}  // namespace

// Destroying the port's session closes it; a failure to close no longer matters.
InetConnection::~InetConnection() = default;

void InetConnection::OpenInternet() try {
  CloseHandle();
  ports::InternetSessionOptions options;
  options.agent = Agent;
  options.access_type = AccessType;
  options.flags = Flags;
  if (AccessType == ports::kAccessProxy) {
    options.proxy = Proxy;
    options.proxy_bypass = ProxyBypass;
  }
  auto opened = ports::CurrentPorts().internet->OpenSession(options);
  if (!opened) RaiseApiError(opened.code);
  session_ = std::move(opened.value);
} catch (...) {
  ReRaiseError(kModule, "OpenInternet");
}

void InetConnection::CloseHandle() try {
  if (session_ == nullptr) return;
  if (const ports::Status closed = session_->Close(); !closed) RaiseApiError(closed.code);
  session_.reset();
} catch (...) {
  ReRaiseError(kModule, "CloseHandle");
}

}  // namespace tmw
