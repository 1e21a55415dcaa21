#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The list of loading servers, "TMW_links.dat": one base URL a line, lines separated by CR LF.
namespace tmw {

// Chooses the server to load from. Returns false with the reason if the list is empty or names no
// server that can be used.
[[nodiscard]] bool TryChooseServer(std::string_view text, bool no_ftp, std::int64_t tick_count,
                                   std::string& server, std::string& reason);

// The usable servers in file order. Lines are trimmed; empty ones are skipped, and those of FTP
// with no_ftp, and so are lines that are no address; a line without a scheme is plain HTTP.
std::vector<std::string> ParseServerList(std::string_view text, bool no_ftp);

// The 0-based number of the server to load from; count is above 0.
std::size_t PickServer(std::int64_t tick_count, std::size_t count);

}  // namespace tmw
