#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace tests {

// The server's end of one connection, for scripts. Nothing it does outlasts the server.
class Peer {
 public:
  Peer(std::uintptr_t socket, const std::atomic<bool>& is_ending)
      : socket_(socket), is_ending_(is_ending) {}

  std::string ReadHead() const;
  bool Send(std::string_view bytes) const;  // false once the client has gone
  void Stall() const;                       // until the client goes, 20 seconds at most
  void Reset() const;                       // the connection will end with a reset
  static void Pause(int milliseconds);

 private:
  std::uintptr_t socket_;
  const std::atomic<bool>& is_ending_;
};

// What is done with a request once its head has arrived; the connection is closed afterwards, which
// an answer should say ("Connection: close"): clients may send their next request on it.
using Script = std::function<void(Peer& peer, const std::string& head)>;

// An HTTP server on loopback that does what a script says, however wrong. One connection at a time,
// on a thread of its own.
class ScriptedServer {
 public:
  explicit ScriptedServer(Script script);
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;
  ~ScriptedServer();

  std::string Host() const { return "127.0.0.1:" + std::to_string(port_); }
  std::string Url(const std::string& path) const { return "http://" + Host() + path; }
  std::vector<std::string> Heads() const;  // of all requests so far

 private:
  void Serve();

  Script script_;
  int port_ = 0;
  std::uintptr_t listener_;
  mutable std::mutex mutex_;
  std::vector<std::string> heads_;
  std::atomic<bool> is_ending_ = false;
  std::thread thread_;
};

// A port of loopback that nobody listens on.
int UnusedPort();

}  // namespace tests
