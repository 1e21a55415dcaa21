#include "engine/server_list.h"

#include <string>
#include <string_view>

#include "engine/engine_texts.h"
#include "foundation/encodings.h"
#include "foundation/text.h"

namespace tmw {
namespace {

// Not even an address: a page of another server, a slip of the maker's.
bool IsAddress(std::string_view line) {
  constexpr std::size_t kMaxLength = 2000;
  if (Utf8ToUtf16(line).size() > kMaxLength) return false;
  for (const char c : line) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F || c == '<' || c == '>') return false;
  }
  const std::string lower = LowerCase(line);
  for (const std::string_view scheme : {"http", "https", "ftp"}) {
    if (!lower.starts_with(scheme)) continue;
    const std::string_view rest = std::string_view(lower).substr(scheme.size());
    // "http:/x", "https//x"; but "ftp.x" and "https.x" are hosts.
    if (rest.starts_with(":") ? !rest.starts_with("://") : rest.starts_with("/")) return false;
  }
  return true;
}

}  // namespace

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
    if (server.empty() || !IsAddress(server)) continue;
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
