#include "engine/server_list.h"

#include "engine/engine_texts.h"
#include "foundation/encodings.h"
#include "foundation/text.h"

namespace tmw {

bool TryChooseServer(std::string_view text, bool no_ftp, std::int64_t tick_count,
                     std::string& server, std::string& reason) {
  const std::vector<std::string> servers = ParseServerList(text, no_ftp);
  if (servers.empty()) {
    reason = text.empty() ? engine_texts::kServerListEmpty : engine_texts::kNoServer;
    return false;
  }
  server = servers[PickServer(tick_count, servers.size())];
  return true;
}

std::vector<std::string> ParseServerList(std::string_view text, bool no_ftp) {
  std::vector<std::string> servers;
  for (const std::string& line : Split(text, kCrLf)) {
    const std::string server = Trim(line);
    if (server.empty()) continue;
    const std::string lower = LowerCase(server);
    if (lower.starts_with("ftp://")) {
      if (!no_ftp) servers.push_back(server);
    } else if (lower.starts_with("http://") || lower.starts_with("https://")) {
      servers.push_back(server);
    } else {
      servers.push_back("http://" + server);
    }
  }
  return servers;
}

std::size_t PickServer(std::int64_t tick_count, std::size_t count) {
  constexpr std::int64_t kTickMask = 0xFFFFFF;
  return static_cast<std::size_t>(tick_count & kTickMask) % count;
}

}  // namespace tmw
