#include "platform/factories.h"

#include <cstddef>
#include <iterator>
#include <string_view>

#include "platform/windows/native_path.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "ports/system_info.h"

namespace platform {
namespace {

static_assert(sizeof(OSVERSIONINFOA) == 148, "the system's ANSI version record");
#ifndef _WIN64
static_assert(sizeof(MEMORYSTATUS) == 32, "the system's memory record");
#endif

// As the 32-bit record has it.
std::int64_t Signed(std::size_t amount) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(amount));
}

class WindowsSystemInfo final : public ports::SystemInfo {
 public:
  std::optional<ports::OsFacts> Os() override {
    OSVERSIONINFOA record{};
    record.dwOSVersionInfoSize = sizeof(record);
    if (GetVersionExA(&record) == FALSE) return std::nullopt;
    ports::OsFacts facts;
    facts.major = record.dwMajorVersion;
    facts.minor = record.dwMinorVersion;
    facts.build = record.dwBuildNumber;
    facts.platform = record.dwPlatformId;
    facts.service_pack.assign(record.szCSDVersion, sizeof(record.szCSDVersion));
    return facts;
  }

  ports::HardwareFacts Hardware() override {
    SYSTEM_INFO system{};
    GetSystemInfo(&system);
    MEMORYSTATUS memory{};
    memory.dwLength = sizeof(memory);
    GlobalMemoryStatus(&memory);
    ports::HardwareFacts facts;
    facts.total_physical = Signed(memory.dwTotalPhys);
    facts.available_physical = Signed(memory.dwAvailPhys);
    facts.total_virtual = Signed(memory.dwTotalVirtual);
    facts.available_virtual = Signed(memory.dwAvailVirtual);
    facts.processors = system.dwNumberOfProcessors;
    return facts;
  }

  ports::SystemFolders Folders() override {
    return {FromWide(WindowsFolder()), FromWide(SystemFolder())};
  }

  std::string DecimalSeparator() override {
    wchar_t buffer[8];
    const int length = GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, buffer,
                                      static_cast<int>(std::size(buffer)));
    // The length counts the zero at the end.
    return length < 2 ? "," : FromWide({buffer, static_cast<std::size_t>(length) - 1});
  }
};

}  // namespace

std::unique_ptr<ports::SystemInfo> MakeSystemInfo() {
  return std::make_unique<WindowsSystemInfo>();
}

}  // namespace platform
