#include "publish/server_lines.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/text.h"
#include "publish/digest.h"

namespace publish {
namespace {

constexpr std::size_t kLongest = 2000;  // characters that the updater takes for an address
constexpr std::string_view kScheme = "://";

bool IsHostSign(char c) {
  const auto byte = static_cast<unsigned char>(c);
  const bool is_letter = (byte | 0x20U) >= 'a' && (byte | 0x20U) <= 'z';
  return is_letter || (byte >= '0' && byte <= '9') || byte == '-' || byte == '_' || byte >= 0x80;
}

bool IsName(std::string_view host) {
  const std::vector<std::string> labels = tmw::Split(host, ".");
  return std::all_of(labels.begin(), labels.end(), [](const std::string& label) {
    return !label.empty() && std::all_of(label.begin(), label.end(), IsHostSign);
  });
}

bool IsPort(std::string_view text) {
  constexpr int kMost = 65'535;
  const bool is_number = !text.empty() && text.size() <= 5 &&
                         text.find_first_not_of("0123456789") == std::string_view::npos;
  return is_number && std::stoi(std::string(text)) >= 1 && std::stoi(std::string(text)) <= kMost;
}

// "one.example", "[::1]", either with ":8080".
bool IsHost(std::string_view text) {
  const bool is_number = text.starts_with('[');
  const std::size_t end = is_number ? text.find(']') : text.find(':');
  if (is_number) {
    if (end == std::string_view::npos || end < 2) return false;
    if (text.substr(1, end - 1).find_first_not_of("0123456789abcdefABCDEF:.") != text.npos)
      return false;
    const std::string_view port = text.substr(end + 1);
    return port.empty() || (port.starts_with(':') && IsPort(port.substr(1)));
  }
  if (end == std::string_view::npos) return IsName(text);
  return IsName(text.substr(0, end)) && IsPort(text.substr(end + 1));
}

bool IsPath(std::string_view path) {
  return std::none_of(path.begin(), path.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= ' ' || byte == 0x7F || std::string_view("\\?#<>\"").find(c) != std::string::npos;
  });
}

bool IsAddress(const std::string& server) {
  if (tmw::CountCharacters(server) > kLongest) return false;
  const std::size_t scheme = server.find(kScheme);
  std::string_view rest = server;
  if (scheme != std::string::npos) {
    const std::string name = tmw::LowerCase(server.substr(0, scheme));
    if (name != "http" && name != "https" && name != "ftp") return false;
    rest.remove_prefix(scheme + kScheme.size());
  }
  const std::size_t slash = std::min(rest.find('/'), rest.size());
  // "https//one.example": the beginning is no host.
  if (scheme == std::string::npos && rest.substr(slash).starts_with("//")) return false;
  return IsHost(rest.substr(0, slash)) && IsPath(rest.substr(slash));
}

}  // namespace

void CheckServer(const std::string& server, const std::string& place, Faults& faults) {
  if (!IsAddress(server)) {
    faults.Add(place, texts::kNoAddress, {server});
  } else if (server.find(kScheme) == std::string::npos) {
    faults.Warn(place, texts::kNoScheme, {server});
  }
}

void CheckServerList(const std::string& text, Faults& faults) {
  const std::string place(tmw::names::kServerListFile);
  std::size_t line_number = 0;
  bool has_server = false;
  for (const std::string& line : LinesOf(text, place, faults)) {
    ++line_number;
    const std::string server = tmw::Trim(line);
    if (server.empty()) continue;
    has_server = true;
    CheckServer(server, place + ":" + std::to_string(line_number), faults);
  }
  if (!has_server) faults.Add(place, texts::kNoServer);
}

std::vector<std::string> ServersOf(const std::string& text) {
  std::vector<std::string> servers;
  for (const std::string& line : tmw::Split(text, tmw::kCrLf)) {
    const std::string server = tmw::Trim(line);
    if (server.empty()) continue;
    const bool has_scheme = server.find(kScheme) != std::string::npos;
    servers.push_back(has_scheme ? server : "http://" + server);
  }
  return servers;
}

}  // namespace publish
