#pragma once

#include <winsock2.h>
#include <ws2tcpip.h>

namespace tests {

using SocketHandle = SOCKET;
using SocketLength = int;
inline constexpr SocketHandle kNoSocket = INVALID_SOCKET;
inline constexpr int kSendFlags = 0;

inline void StartSockets() {
  WSADATA data;
  WSAStartup(MAKEWORD(2, 2), &data);
}
inline void CloseSocket(SocketHandle handle) {
  closesocket(handle);
}
inline int Poll(pollfd* descriptors, unsigned count, int milliseconds) {
  return WSAPoll(descriptors, count, milliseconds);
}

}  // namespace tests
