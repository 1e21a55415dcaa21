#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ports/internet.h"

namespace tmw {

// A session with the internet: the agent's name and the proxy, which OpenInternet reads.
class InetConnection {
 public:
  std::string Agent = "Tamrin";
  std::int32_t AccessType = ports::kAccessPreconfigured;
  std::string Proxy;        // access type 3 only
  std::string ProxyBypass;  // access type 3 only
  std::uint32_t Flags = 0;

  InetConnection() = default;
  InetConnection(const InetConnection&) = delete;
  InetConnection& operator=(const InetConnection&) = delete;
  ~InetConnection();

  void OpenInternet();
  void CloseHandle();

  // nullptr while closed.
  ports::InternetSession* Handle() const { return session_.get(); }

 private:
  std::unique_ptr<ports::InternetSession> session_;
};

}  // namespace tmw
