#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Version and system information (module miVersion).
namespace tmw {

struct AppVersion {
  std::int32_t Major;
  std::int32_t Minor;
  std::int32_t Revision;
};

// This program's own version, from the build.
AppVersion GetAppVersion();

// "3.05.117": the minor number has at least two digits.
std::string GetAppVersionString();

// Operating system and machine, two lines.
std::string GetOSVersionString();

// "6.1.7601 (NT), Service Pack 1", or the name of a system that has one; empty if the system does
// not report it.
std::string GetOSInfoString();

// Memory and processors. On Windows 2 GiB and more read negative.
std::string GetHardwareInfoString();

// The text up to its first character with code 0.
std::string TrimZString(std::string_view text);

// Reads up to four dot-separated numbers; outputs without a number are left unchanged, numbers
// beyond the fourth are only counted. Returns false and changes nothing for an empty text or a
// number that does not fit 32 bits.
bool ParseVersionString(std::string_view text, std::int32_t& first, std::int32_t& second,
                        std::int32_t& third, std::int32_t& fourth, std::int32_t& part_count);

// 1 when a is newer, -1 when older, 0 when equal; default_result when either does not parse. The
// fourth numbers count only when neither is 0.
std::int32_t CompareVersionStrings(std::string_view a, std::string_view b,
                                   std::int32_t default_result);

}  // namespace tmw
