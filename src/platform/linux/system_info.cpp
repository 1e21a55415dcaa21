#include "platform/factories.h"

#include <sys/resource.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <string_view>

#include "ports/system_info.h"

namespace platform {
namespace {

using Amounts = std::map<std::string, std::int64_t>;

// The amounts of /proc/meminfo or /proc/self/status ("Name:   123 kB"), in bytes.
Amounts ReadAmounts(const char* path) {
  Amounts amounts;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const std::size_t colon = line.find(':');
    unsigned long long kilobytes = 0;
    if (colon == std::string::npos) continue;
    // NOLINTNEXTLINE(cert-err34-c): the kernel's own figures.
    if (std::sscanf(line.c_str() + colon + 1, "%llu kB", &kilobytes) != 1) continue;
    amounts[line.substr(0, colon)] = static_cast<std::int64_t>(kilobytes) * 1024;
  }
  return amounts;
}

// What a process may address: its limit, else the 47 bits that user space has.
std::int64_t AddressSpace() {
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
    return static_cast<std::int64_t>(limit.rlim_cur);
  return sizeof(void*) > 4 ? (std::int64_t{1} << 47U) - 1 : 0xBFFFFFFF;
}

// The value of PRETTY_NAME, without its quotes; empty if there is none. os-release(5).
std::string DistributionName() {
  constexpr std::string_view kName = "PRETTY_NAME=";
  for (const char* const path : {"/etc/os-release", "/usr/lib/os-release"}) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
      if (!line.starts_with(kName)) continue;
      std::string value = line.substr(kName.size());
      std::erase(value, '"');
      return value;
    }
  }
  return {};
}

class LinuxSystemInfo final : public ports::SystemInfo {
 public:
  std::optional<ports::OsFacts> Os() override {
    utsname name{};
    if (uname(&name) != 0) return std::nullopt;
    unsigned major = 0;
    unsigned minor = 0;
    unsigned patch = 0;
    // NOLINTNEXTLINE(cert-err34-c): checked by the count.
    const int read = std::sscanf(name.release, "%u.%u.%u", &major, &minor, &patch);
    if (read < 2) return std::nullopt;
    ports::OsFacts facts;
    facts.major = major;
    facts.minor = minor;
    facts.build = patch;
    const std::string kernel = std::string(name.sysname) + " " + name.release;
    const std::string distribution = DistributionName();
    facts.name = distribution.empty() ? kernel : distribution + ", " + kernel;
    return facts;
  }

  ports::HardwareFacts Hardware() override {
    const Amounts machine = ReadAmounts("/proc/meminfo");
    const Amounts process = ReadAmounts("/proc/self/status");
    const auto amount = [](const Amounts& amounts, const char* name) {
      const auto found = amounts.find(name);
      return found == amounts.end() ? std::int64_t{0} : found->second;
    };
    const std::int64_t space = AddressSpace();
    const std::int64_t used = amount(process, "VmSize");
    const long processors = sysconf(_SC_NPROCESSORS_ONLN);
    ports::HardwareFacts facts;
    facts.total_physical = amount(machine, "MemTotal");
    facts.available_physical = amount(machine, "MemAvailable");
    facts.total_virtual = space;
    facts.available_virtual = space > used ? space - used : 0;
    facts.processors = processors > 0 ? static_cast<std::uint32_t>(processors) : 1;
    return facts;
  }

  ports::SystemFolders Folders() override { return {}; }

  std::string DecimalSeparator() override { return ","; }
};

}  // namespace

std::unique_ptr<ports::SystemInfo> MakeSystemInfo() {
  return std::make_unique<LinuxSystemInfo>();
}

}  // namespace platform
