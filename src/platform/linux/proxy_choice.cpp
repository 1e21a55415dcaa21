#include "platform/linux/proxy_choice.h"

#include <cstddef>
#include <vector>

#include "foundation/encodings.h"
#include "foundation/file_names.h"

namespace platform {
namespace {

constexpr std::string_view kSchemeMark = "://";

std::vector<std::string> Entries(std::string_view list) {
  constexpr std::string_view kSeparators = "; \t\r\n";
  std::vector<std::string> entries;
  std::size_t begin = list.find_first_not_of(kSeparators);
  while (begin != std::string_view::npos) {
    const std::size_t end = list.find_first_of(kSeparators, begin);
    entries.emplace_back(list.substr(begin, end - begin));
    begin = end == std::string_view::npos ? end : list.find_first_not_of(kSeparators, end);
  }
  return entries;
}

bool IsBypassed(std::string_view bypass, const std::string& host) {
  for (const std::string& entry : Entries(bypass)) {
    std::string mask = tmw::LowerCase(entry);
    if (mask == "<local>") {
      if (host.find('.') == std::string::npos) return true;
      continue;
    }
    const std::size_t mark = mask.find(kSchemeMark);
    if (mark != std::string::npos) mask.erase(0, mark + kSchemeMark.size());
    if (tmw::MatchesMask(host, mask)) return true;
  }
  return false;
}

// "http://" is what an entry without a scheme of its own means. A user's name and password may
// stand before the server, with a colon of their own.
std::string WithSchemeAndPort(std::string server) {
  while (server.ends_with('/'))
    server.pop_back();
  const std::size_t mark = server.find(kSchemeMark);
  if (mark == std::string::npos) server.insert(0, "http://");
  const std::size_t user_end = server.rfind('@');
  const std::size_t host =
      user_end == std::string::npos ? server.find(kSchemeMark) + kSchemeMark.size() : user_end + 1;
  const std::size_t bracket = server.rfind(']');
  const std::size_t colon = server.rfind(':');
  const bool has_port = colon != std::string::npos && colon >= host &&
                        (bracket == std::string::npos || colon > bracket);
  return has_port ? server : server + ":80";
}

}  // namespace

std::string ChooseProxy(std::string_view proxies, std::string_view bypass, std::string_view scheme,
                        std::string_view host) {
  if (IsBypassed(bypass, tmw::LowerCase(host))) return "";
  std::string general;
  std::string socks;
  for (const std::string& entry : Entries(proxies)) {
    const std::size_t equals = entry.find('=');
    if (equals == std::string::npos) {
      if (general.empty()) general = WithSchemeAndPort(entry);
      continue;
    }
    const std::string for_scheme = tmw::LowerCase(entry.substr(0, equals));
    const std::string server = entry.substr(equals + 1);
    if (for_scheme == scheme) return WithSchemeAndPort(server);
    if (for_scheme == "socks" && socks.empty()) socks = "socks4a://" + server;
  }
  return general.empty() ? socks : general;
}

}  // namespace platform
