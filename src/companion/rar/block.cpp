#include "companion/rar/block.h"

#include <algorithm>
#include <string_view>

namespace companion::rar {

std::unique_ptr<BlockReader> RecogniseFormat(os::ReadableFile& file) {
  constexpr std::string_view kRar4 = {"Rar!\x1A\x07\x00", 7};
  constexpr std::string_view kRar5 = {"Rar!\x1A\x07\x01\x00", 8};
  std::array<char, 8> bytes{};
  const auto got = file.ReadAt(0, bytes.data(), bytes.size());
  if (!got) return nullptr;
  const std::string_view beginning(bytes.data(), *got);
  if (beginning.starts_with(kRar5)) return MakeRar5BlockReader();
  if (beginning.starts_with(kRar4)) return MakeRar4BlockReader();
  return nullptr;
}

std::uint32_t ToDosTime(std::int64_t seconds) {
  const std::tm local = os::LocalTime(seconds);
  const int year = local.tm_year + 1900;
  if (year < 1980 || year > 2107) return 0;
  const auto bits = [](int value, unsigned shift) {
    return static_cast<std::uint32_t>(value) << shift;
  };
  return bits(year - 1980, 25) | bits(local.tm_mon + 1, 21) | bits(local.tm_mday, 16) |
         bits(local.tm_hour, 11) | bits(local.tm_min, 5) | bits(std::min(local.tm_sec, 59) / 2, 0);
}

std::int64_t FromDosTime(std::uint32_t dos_time) {
  const auto bits = [&](unsigned shift, unsigned count) {
    return static_cast<int>(dos_time >> shift & ((1U << count) - 1));
  };
  std::tm local{};
  local.tm_year = bits(25, 7) + 80;
  local.tm_mon = bits(21, 4) - 1;
  local.tm_mday = bits(16, 5);
  local.tm_hour = bits(11, 5);
  local.tm_min = bits(5, 6);
  local.tm_sec = bits(0, 5) * 2;
  local.tm_isdst = -1;
  static_assert(sizeof(std::time_t) == 8, "the form reaches the year 2107");
  return std::mktime(&local);
}

}  // namespace companion::rar
