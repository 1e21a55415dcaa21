#include "tests/support/scripted_server.h"

#include <gtest/gtest.h>
#include <socket_api.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tests {
namespace {

constexpr int kStallLimit = 20'000;  // milliseconds
constexpr int kGlance = 20;

sockaddr_in Loopback() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

bool IsReadable(SocketHandle handle, int milliseconds) {
  pollfd wanted{handle, POLLIN, 0};
  return Poll(&wanted, 1, milliseconds) > 0;
}

class SocketPeer final : public Peer {
 public:
  SocketPeer(SocketHandle handle, const std::atomic<bool>& is_ending)
      : handle_(handle), is_ending_(is_ending) {}
  SocketPeer(const SocketPeer&) = delete;
  SocketPeer& operator=(const SocketPeer&) = delete;
  ~SocketPeer() override { CloseSocket(handle_); }

  std::string ReadHead() {
    std::string head;
    while (head.find("\r\n\r\n") == std::string::npos && IsReadable(handle_, kStallLimit)) {
      char bytes[4096];
      const auto count = recv(handle_, bytes, sizeof(bytes), 0);
      if (count <= 0) break;
      head.append(bytes, static_cast<std::size_t>(count));
    }
    return head;
  }

  bool Send(std::string_view bytes) override {
    while (!bytes.empty() && !is_ending_) {
      pollfd wanted{handle_, POLLOUT, 0};
      if (Poll(&wanted, 1, kGlance) == 0) continue;
      const auto piece = static_cast<int>(std::min<std::size_t>(bytes.size(), 65536));
      const auto count = send(handle_, bytes.data(), static_cast<unsigned>(piece), kSendFlags);
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return bytes.empty();
  }

  void Stall() override {
    for (int waited = 0; waited < kStallLimit && !is_ending_; waited += kGlance) {
      if (IsReadable(handle_, kGlance)) return;
    }
  }

  void Reset() override {
    const linger at_once{1, 0};
    setsockopt(handle_, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&at_once),
               sizeof(at_once));
  }

 private:
  SocketHandle handle_;
  const std::atomic<bool>& is_ending_;
};

struct BoundSocket {
  SocketHandle handle;
  int port;
};

BoundSocket Bind() {
  StartSockets();
  const SocketHandle handle = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = Loopback();
  auto* const any_address = reinterpret_cast<sockaddr*>(&address);
  SocketLength length = sizeof(address);
  EXPECT_EQ(bind(handle, any_address, length), 0);
  EXPECT_EQ(getsockname(handle, any_address, &length), 0);
  return {handle, ntohs(address.sin_port)};
}

}  // namespace

void Peer::Pause(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

ScriptedServer::ScriptedServer(Script script) : script_(std::move(script)) {
  const BoundSocket bound = Bind();
  EXPECT_EQ(listen(bound.handle, 16), 0);
  listener_ = static_cast<std::uintptr_t>(bound.handle);
  port_ = bound.port;
  thread_ = std::thread([this] { Serve(); });
}

ScriptedServer::~ScriptedServer() {
  is_ending_ = true;
  thread_.join();
  CloseSocket(static_cast<SocketHandle>(listener_));
}

std::string ScriptedServer::Url(std::string_view path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + std::string(path);
}

std::vector<std::string> ScriptedServer::Heads() const {
  const std::lock_guard lock(mutex_);
  return heads_;
}

void ScriptedServer::Serve() {
  const auto listener = static_cast<SocketHandle>(listener_);
  while (!is_ending_) {
    if (!IsReadable(listener, kGlance)) continue;
    SocketPeer peer(accept(listener, nullptr, nullptr), is_ending_);
    const std::string head = peer.ReadHead();
    if (head.empty()) continue;
    {
      const std::lock_guard lock(mutex_);
      heads_.push_back(head);
    }
    script_(peer, head);
  }
}

int UnusedPort() {
  const BoundSocket bound = Bind();
  CloseSocket(bound.handle);
  return bound.port;
}

}  // namespace tests
