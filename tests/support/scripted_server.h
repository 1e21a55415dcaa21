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

// The server's end of one connection, for scripts.
class Peer {
 public:
  virtual ~Peer() = default;

  // False once the client has gone.
  virtual bool Send(std::string_view bytes) = 0;

  // Waits until the client goes, 20 seconds at most.
  virtual void Stall() = 0;

  // Ends the connection with a reset instead of an orderly end.
  virtual void Reset() = 0;

  static void Pause(int milliseconds);
};

// What is done with a request once its head has come; the connection is closed afterwards.
using Script = std::function<void(Peer& peer, const std::string& head)>;

// An HTTP server on loopback that does what a script says, however wrong. One connection at a time,
// on a thread of its own.
class ScriptedServer {
 public:
  explicit ScriptedServer(Script script);
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;
  ~ScriptedServer();

  int Port() const { return port_; }
  std::string Url(std::string_view path) const;

  // The heads of all requests so far.
  std::vector<std::string> Heads() const;

 private:
  void Serve();

  Script script_;
  std::uintptr_t listener_ = 0;  // the system's socket
  int port_ = 0;
  mutable std::mutex mutex_;
  std::vector<std::string> heads_;
  std::atomic<bool> is_ending_ = false;
  std::thread thread_;
};

// A port of loopback where nobody listens.
int UnusedPort();

}  // namespace tests
