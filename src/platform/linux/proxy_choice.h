#pragma once

#include <string>
#include <string_view>

namespace platform {

// Which proxy a URL is fetched through, after WinINet's lists: proxies as "host:port" or
// "scheme=host:port", bypass masks with "*" and the word "<local>" (names without a dot), both
// separated by blanks or semicolons. "" when it is reached directly. An entry without a port means
// port 80, except for "socks=".
std::string ChooseProxy(std::string_view proxies, std::string_view bypass, std::string_view scheme,
                        std::string_view host);

}  // namespace platform
