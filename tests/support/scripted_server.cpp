#include "tests/support/scripted_server.h"

#include <gtest/gtest.h>
#include <socket_api.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tests {
namespace {

constexpr int kLimit = 20'000;  // milliseconds
constexpr int kGlance = 20;

bool IsReady(std::uintptr_t socket, short events, int milliseconds) {
  pollfd wanted{static_cast<SocketHandle>(socket), events, 0};
  return Poll(&wanted, 1, milliseconds) > 0;
}

std::uintptr_t Bind(int& port) {
  StartSockets();
  const SocketHandle handle = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* const any_address = reinterpret_cast<sockaddr*>(&address);
  SocketLength length = sizeof(address);
  EXPECT_EQ(bind(handle, any_address, length), 0);
  EXPECT_EQ(getsockname(handle, any_address, &length), 0);
  port = ntohs(address.sin_port);
  return static_cast<std::uintptr_t>(handle);
}

}  // namespace

std::string Peer::ReadHead() const {
  std::string head;
  char bytes[4096];
  while (head.find("\r\n\r\n") == std::string::npos && IsReady(socket_, POLLIN, kLimit)) {
    const auto count = recv(static_cast<SocketHandle>(socket_), bytes, sizeof(bytes), 0);
    if (count <= 0) break;
    head.append(bytes, static_cast<std::size_t>(count));
  }
  return head;
}

bool Peer::Send(std::string_view bytes) const {
  while (!bytes.empty() && !is_ending_) {
    if (!IsReady(socket_, POLLOUT, kGlance)) continue;
    const auto piece = static_cast<unsigned>(std::min<std::size_t>(bytes.size(), 65536));
    const auto sent = send(static_cast<SocketHandle>(socket_), bytes.data(), piece, kSendFlags);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return bytes.empty();
}

void Peer::Stall() const {
  for (int waited = 0; waited < kLimit && !is_ending_; waited += kGlance) {
    if (IsReady(socket_, POLLIN, kGlance)) return;
  }
}

void Peer::Reset() const {
  const linger at_once{1, 0};
  setsockopt(static_cast<SocketHandle>(socket_), SOL_SOCKET, SO_LINGER,
             reinterpret_cast<const char*>(&at_once), sizeof(at_once));
}

void Peer::Pause(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

ScriptedServer::ScriptedServer(Script script) : script_(std::move(script)), listener_(Bind(port_)) {
  EXPECT_EQ(listen(static_cast<SocketHandle>(listener_), 16), 0);
  thread_ = std::thread([this] { Serve(); });
}

ScriptedServer::~ScriptedServer() {
  is_ending_ = true;
  thread_.join();
  CloseSocket(static_cast<SocketHandle>(listener_));
}

std::vector<std::string> ScriptedServer::Heads() const {
  const std::lock_guard lock(mutex_);
  return heads_;
}

void ScriptedServer::Serve() {
  while (!is_ending_) {
    if (!IsReady(listener_, POLLIN, kGlance)) continue;
    const SocketHandle client = accept(static_cast<SocketHandle>(listener_), nullptr, nullptr);
    Peer peer(static_cast<std::uintptr_t>(client), is_ending_);
    if (const std::string head = peer.ReadHead(); !head.empty()) {
      {
        const std::lock_guard lock(mutex_);
        heads_.push_back(head);
      }
      script_(peer, head);
    }
    CloseSocket(client);
  }
}

int UnusedPort() {
  int port = 0;
  CloseSocket(static_cast<SocketHandle>(Bind(port)));
  return port;
}

}  // namespace tests
