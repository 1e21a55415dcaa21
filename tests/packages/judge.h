#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <utility>

namespace tests {

// Runs an independent program (a shell command); returns its exit status and all that it printed.
// Linux only.
inline std::pair<int, std::string> Judge(const std::string& command) {
#ifdef _WIN32
  return {-1, command};
#else
  FILE* const pipe = popen(("export LC_ALL=C.UTF-8; " + command + " 2>&1").c_str(), "r");
  std::string output;
  std::array<char, 4096> buffer{};
  while (pipe != nullptr && fgets(buffer.data(), buffer.size(), pipe) != nullptr) {
    output += buffer.data();
  }
  return {pipe == nullptr ? -1 : pclose(pipe), output};
#endif
}

inline std::string InQuotes(const std::string& path) {
  return "'" + path + "'";
}

}  // namespace tests
