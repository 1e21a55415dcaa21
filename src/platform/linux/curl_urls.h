#pragma once

#include <string>
#include <string_view>

#include "ports/outcome.h"

// URLs, read by libcurl's own parser.
namespace platform {

// Whether the URL begins with that scheme (lower-case) and "://".
bool HasScheme(std::string_view url, std::string_view scheme);

// A URL as a user or a server list writes it, with blanks and letters beyond ASCII escaped;
// "www." stands for "http://www.". Other schemes than http, https and ftp, and what is malformed,
// fail with a code of the internet layer.
ports::Outcome<std::string> AcceptUrl(const std::string& text);

// The target of a redirect, absolute; "" when it is malformed.
std::string ResolveUrl(const std::string& base, const std::string& target);

struct UrlParts {
  std::string scheme;
  std::string host;
};

UrlParts SplitUrl(const std::string& url);

}  // namespace platform
