#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tests {

using SocketHandle = int;
using SocketLength = socklen_t;
inline constexpr SocketHandle kNoSocket = -1;
inline constexpr int kSendFlags = MSG_NOSIGNAL;

inline void StartSockets() {}
inline void CloseSocket(SocketHandle handle) {
  close(handle);
}
inline int Poll(pollfd* descriptors, unsigned count, int milliseconds) {
  return poll(descriptors, count, milliseconds);
}

}  // namespace tests
