#include "engine/digest.h"

#include <charconv>
#include <cstddef>
#include <optional>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "foundation/version.h"

namespace tmw {
namespace {

constexpr std::string_view kComponentBeginning = "updater:";
constexpr std::size_t kFirstComponentLine = 2;
constexpr std::size_t kComponentFields = 3;

// A whole decimal number of bytes; surrounding blanks are allowed.
std::optional<std::int32_t> ReadSize(std::string_view field) {
  const std::string text = Trim(field);
  std::int32_t size = -1;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), size);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size() || size < 0) {
    return std::nullopt;
  }
  return size;
}

ComponentLineError ParseComponentLine(std::string_view rest, WuUpdaterComponent& component) {
  if (rest.empty()) return ComponentLineError::kEmpty;
  const std::vector<std::string> fields = Split(rest, "|");
  if (fields.size() < kComponentFields) return ComponentLineError::kTooFewFields;
  const std::optional<std::int32_t> size = ReadSize(fields[1]);
  if (!size) return ComponentLineError::kBadSize;
  component = {fields[0], *size, Trim(fields[2]), ""};
  return ComponentLineError::kNone;
}

}  // namespace

UpdaterVersionCheck CheckUpdaterVersion(std::string_view required, std::int32_t own_major,
                                        std::int32_t own_minor) {
  std::int32_t major = 0;
  std::int32_t minor = 0;
  std::int32_t third = 0;
  std::int32_t fourth = 0;
  std::int32_t count = 0;
  if (!ParseVersionString(required, major, minor, third, fourth, count)) {
    return UpdaterVersionCheck::kUnreadable;
  }
  if (own_major < major) return UpdaterVersionCheck::kTooOld;
  return own_minor < minor ? UpdaterVersionCheck::kUpdateNeeded : UpdaterVersionCheck::kGood;
}

bool ParseUpdateVersion(std::string_view line, std::array<std::int32_t, 4>& numbers) {
  std::int32_t count = 0;
  std::array<std::int32_t, 4> read{};
  const bool is_read = ParseVersionString(line, read[0], read[1], read[2], read[3], count);
  if (!is_read || count != 4) return false;
  numbers = read;
  return true;
}

ComponentLineError ParseComponentLines(const std::vector<std::string>& lines,
                                       std::vector<WuUpdaterComponent>& components) {
  for (std::size_t i = kFirstComponentLine; i < lines.size(); ++i) {
    const std::string_view line = lines[i];
    if (LowerCase(line.substr(0, kComponentBeginning.size())) != kComponentBeginning) continue;
    WuUpdaterComponent component;
    const ComponentLineError error =
        ParseComponentLine(line.substr(kComponentBeginning.size()), component);
    if (error != ComponentLineError::kNone) return error;
    components.push_back(component);
  }
  return ComponentLineError::kNone;
}

}  // namespace tmw
