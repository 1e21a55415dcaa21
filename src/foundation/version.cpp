#include "foundation/version.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "foundation/text.h"
#include "ports/ports.h"
#include "ports/system_info.h"

namespace tmw {
namespace {

struct ParsedVersion {
  std::array<std::int32_t, 4> numbers{};
  std::int32_t part_count = 0;
};

// The longest numeric prefix (sign, digits, exponent) behind leading blanks; no number gives 0.
// Nothing when the value does not fit.
std::optional<std::int32_t> ReadLeadingNumber(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t");
  if (start == std::string_view::npos) return 0;
  text.remove_prefix(start);
  if (text.front() == '+') text.remove_prefix(1);
  const bool has_digit =
      text.find_first_of("0123456789") == (text.starts_with('-') ? std::size_t{1} : std::size_t{0});
  if (!has_digit) return 0;
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc()) return std::nullopt;
  value = std::nearbyint(value);
  if (value < std::numeric_limits<std::int32_t>::min() ||
      value > std::numeric_limits<std::int32_t>::max()) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(value);
}

std::optional<ParsedVersion> ParseVersion(std::string_view text) {
  if (text.empty()) return std::nullopt;
  const std::vector<std::string> pieces = Split(text, ".");
  ParsedVersion version;
  version.part_count = static_cast<std::int32_t>(pieces.size());
  for (std::size_t i = 0; i < pieces.size() && i < version.numbers.size(); ++i) {
    const std::optional<std::int32_t> number = ReadLeadingNumber(pieces[i]);
    if (!number) return std::nullopt;
    version.numbers[i] = *number;
  }
  return version;
}

std::string Megabytes(std::int64_t bytes) {
  const double amount = static_cast<double>(bytes) / 1024 / 1024;
  return std::to_string(static_cast<std::int64_t>(std::nearbyint(amount))) + " Mb";
}

}  // namespace

AppVersion GetAppVersion() {
  return {TMW_VERSION_MAJOR, TMW_VERSION_MINOR, TMW_VERSION_REVISION};
}

std::string GetAppVersionString() {
  const AppVersion version = GetAppVersion();
  std::string minor = std::to_string(version.Minor);
  if (minor.size() < 2) minor.insert(0, "0");
  return std::to_string(version.Major) + "." + minor + "." + std::to_string(version.Revision);
}

std::string GetOSVersionString() {
  return GetOSInfoString() + std::string(kCrLf) + GetHardwareInfoString();
}

std::string GetOSInfoString() {
  const std::optional<ports::OsFacts> os = ports::CurrentPorts().system_info->Os();
  if (!os) return {};
  if (!os->name.empty()) return os->name;
  std::string text =
      std::to_string(os->major) + "." + std::to_string(os->minor) + "." + std::to_string(os->build);
  if (os->platform == 1) text += " (9x)";
  if (os->platform == 2) text += " (NT)";
  const std::string service_pack = TrimZString(os->service_pack);
  if (!service_pack.empty()) text += ", " + service_pack;
  return text;
}

std::string GetHardwareInfoString() {
  const ports::HardwareFacts facts = ports::CurrentPorts().system_info->Hardware();
  return "RAM: " + Megabytes(facts.total_physical) +
         ", free: " + Megabytes(facts.available_physical) +
         "; VM: " + Megabytes(facts.total_virtual) +
         ", free VM: " + Megabytes(facts.available_virtual) +
         "; processors: " + std::to_string(facts.processors);
}

std::string TrimZString(std::string_view text) {
  return std::string(text.substr(0, text.find('\0')));
}

bool ParseVersionString(std::string_view text, std::int32_t& first, std::int32_t& second,
                        std::int32_t& third, std::int32_t& fourth, std::int32_t& part_count) {
  const std::optional<ParsedVersion> version = ParseVersion(text);
  if (!version) return false;
  const std::array<std::int32_t*, 4> outputs = {&first, &second, &third, &fourth};
  for (std::size_t i = 0; i < outputs.size() && std::cmp_less(i, version->part_count); ++i) {
    *outputs[i] = version->numbers[i];
  }
  part_count = version->part_count;
  return true;
}

std::int32_t CompareVersionStrings(std::string_view a, std::string_view b,
                                   std::int32_t default_result) {
  const std::optional<ParsedVersion> left = ParseVersion(a);
  const std::optional<ParsedVersion> right = ParseVersion(b);
  if (!left || !right) return default_result;
  for (std::size_t i = 0; i < 3; ++i) {
    if (left->numbers[i] != right->numbers[i]) return left->numbers[i] > right->numbers[i] ? 1 : -1;
  }
  const std::int32_t x = left->numbers[3];
  const std::int32_t y = right->numbers[3];
  if (x != 0 && y != 0 && x != y) return x > y ? 1 : -1;
  return 0;
}

}  // namespace tmw
