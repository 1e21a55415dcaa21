#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "services/updater_settings.h"
#include "transfer/inet_connection.h"

// The shared session and the simple downloads (module miInet): no side file, no resuming, for small
// files.
namespace tmw {

inline constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

// One for the process, made at the first call by the updater's settings.
std::shared_ptr<InetConnection> GetInetConnection();

// An open connection by the given settings' proxy.
std::shared_ptr<InetConnection> MakeInetConnection(const UpdaterSettings& settings);

// A server's address and a path with one "/" between them; one is dropped from each side, not more.
// Without a base the tail alone.
std::string JoinUrl(std::string_view base, std::string_view tail);

// Replaces the local file. A body of more than max_bytes is a failure. may_wait is asked while the
// server is awaited and after every chunk, and lets events run; false ends the download as a
// failure. Without it events run just the same.
void DownloadFile(const std::string& url, const std::string& local_name,
                  std::int64_t max_bytes = kNoLimit, const ports::WaitHandler& may_wait = {});

// The same; false and a text when the transfer fails. What has come by then stays in the local
// file. A local file that cannot be made still raises.
[[nodiscard]] bool TryDownloadFile(const std::string& url, const std::string& local_name,
                                   std::string& error_text, std::int64_t max_bytes = kNoLimit,
                                   const ports::WaitHandler& may_wait = {});

// The first URL, then, when that fails, the second unless it is empty or may_wait says no. The text
// has one failure a line, the first URL's first.
[[nodiscard]] bool TryDownloadFileFromTwoUrls(const std::string& first_url,
                                              const std::string& second_url,
                                              const std::string& local_name,
                                              std::string& error_text,
                                              std::int64_t max_bytes = kNoLimit,
                                              const ports::WaitHandler& may_wait = {});

}  // namespace tmw
