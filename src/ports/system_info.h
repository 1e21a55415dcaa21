#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ports {

struct OsFacts {
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t build = 0;
  std::uint32_t platform = 0;  // Windows: 1 the 9x line, 2 NT; Linux: 0
  std::string service_pack;    // as the system stores it, zero characters included
  std::string name;  // what the system calls itself ("Debian GNU/Linux 12 (bookworm)"), and its
                     // kernel; empty on Windows, which has numbers only
};

// Amounts of memory in bytes. Windows: the system's 32-bit record read as signed numbers, so 2 GiB
// and more are negative. Linux: as they are.
struct HardwareFacts {
  std::int64_t total_physical = 0;
  std::int64_t available_physical = 0;
  std::int64_t total_virtual = 0;  // the process's address space
  std::int64_t available_virtual = 0;
  std::uint32_t processors = 0;
};

// The system's own folders; empty on Linux, which has none.
struct SystemFolders {
  std::string windows;
  std::string system;
};

class SystemInfo {
 public:
  virtual ~SystemInfo() = default;

  // Windows: GetVersionExA. Linux: os-release(5) and uname. Nothing on failure.
  virtual std::optional<OsFacts> Os() = 0;

  // Windows: GetSystemInfo, GlobalMemoryStatus. Linux: sysconf, /proc/meminfo, RLIMIT_AS.
  virtual HardwareFacts Hardware() = 0;

  // Windows: GetWindowsDirectoryW, GetSystemDirectoryW.
  virtual SystemFolders Folders() = 0;

  // What the user's number format puts before decimals. Linux: ",", as in the product's language.
  virtual std::string DecimalSeparator() = 0;
};

}  // namespace ports
