#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "services/updater_settings.h"
#include "transfer/inet_connection.h"

// The shared session and the simple downloads (module miInet): no side file, no resuming, for small
// files. A connection that cannot be made or breaks off is tried again, see Attempts.
namespace tmw {

inline constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

// The session of the process, made from the updater's settings at the first call.
std::shared_ptr<InetConnection> GetInetConnection();

// An open connection that uses the proxy of the given settings.
std::shared_ptr<InetConnection> MakeInetConnection(const UpdaterSettings& settings);

// Joins a server's address and a path by one "/", of which at most one is dropped from each side.
// An empty base gives the tail alone.
std::string JoinUrl(std::string_view base, std::string_view tail);

// Replaces the local file. A body longer than max_bytes is a failure. may_wait is called while
// waiting for the server and after every chunk; it processes pending events, and the download fails
// if it returns false. Without it events are processed too.
void DownloadFile(const std::string& url, const std::string& local_name,
                  std::int64_t max_bytes = kNoLimit, const ports::WaitHandler& may_wait = {});

// The same, but returns false and a text if the transfer fails. The bytes received until then stay
// in the local file. A local file that cannot be created still raises.
[[nodiscard]] bool TryDownloadFile(const std::string& url, const std::string& local_name,
                                   std::string& error_text, std::int64_t max_bytes = kNoLimit,
                                   const ports::WaitHandler& may_wait = {});

// Tries the first URL and, if that fails, the second, unless it is empty or may_wait returns false;
// then, if a connection has broken off, both again.
// The text has one failure per line, that of the first URL first.
[[nodiscard]] bool TryDownloadFileFromTwoUrls(const std::string& first_url,
                                              const std::string& second_url,
                                              const std::string& local_name,
                                              std::string& error_text,
                                              std::int64_t max_bytes = kNoLimit,
                                              const ports::WaitHandler& may_wait = {});

}  // namespace tmw
