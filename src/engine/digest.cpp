#include "engine/digest.h"

#include <charconv>
#include <cstddef>
#include <optional>
#include <utility>

#include "engine/engine_texts.h"
#include "engine/trust_lines.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/path_guard.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "services/run_module.h"

namespace tmw {
namespace {

constexpr std::size_t kLeastLines = 2;
constexpr std::string_view kComponentBeginning = "updater:";
constexpr std::size_t kComponentFields = 3;

bool Refuse(const char* why, std::string& reason) {
  reason = why;
  return false;
}

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

bool TryParseComponent(std::string_view rest, WuUpdaterComponent& component, std::string& reason) {
  if (rest.empty()) return Refuse(engine_texts::kUpdateLineEmpty, reason);
  const std::vector<std::string> fields = Split(rest, "|");
  if (fields.size() < kComponentFields) return Refuse(engine_texts::kUpdateLineShort, reason);
  const std::optional<std::int32_t> size = ReadSize(fields[1]);
  if (!size) return Refuse(engine_texts::kUpdateLineSize, reason);
  component = {fields[0], *size, Trim(fields[2]), ""};
  return true;
}

}  // namespace

bool TryParseDigest(const std::string& text, std::int32_t own_major, std::int32_t own_minor,
                    Digest& digest, std::string& reason) {
  if (text.empty()) return Refuse(engine_texts::kDigestEmpty, reason);
  const std::vector<std::string> lines = Split(text, kCrLf);
  if (lines.size() < kLeastLines) return Refuse(engine_texts::kDigestError, reason);
  digest.Updater = CheckForUpdaterVersion(lines[1], own_major, own_minor);
  if (digest.Updater == UpdaterVersionCheck::kUnreadable)
    return Refuse(engine_texts::kNoUpdaterVersion, reason);
  if (digest.Updater == UpdaterVersionCheck::kTooOld) return true;
  digest.Version = lines[0];
  if (!TryParseUpdateVersion(digest.Version, digest.VersionNumbers))
    return Refuse(engine_texts::kNoUpdateVersion, reason);
  if (!TryReadManifestLine(lines, digest.Manifest, reason)) return false;
  return digest.Updater == UpdaterVersionCheck::kGood ||
         TryParseUpdaterDigestPart(lines, digest.UpdaterComponents, reason);
}

UpdaterVersionCheck CheckForUpdaterVersion(std::string_view required, std::int32_t own_major,
                                           std::int32_t own_minor) try {
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
} catch (...) {
  ReRaiseError(kRunModule, "CheckForUpdaterVersion");
}

bool TryParseUpdateVersion(std::string_view line, std::array<std::int32_t, 4>& numbers) {
  std::int32_t count = 0;
  std::array<std::int32_t, 4> read{};
  const bool is_read = ParseVersionString(line, read[0], read[1], read[2], read[3], count);
  if (!is_read || count != 4) return false;
  numbers = read;
  return true;
}

bool TryParseUpdaterDigestPart(const std::vector<std::string>& lines,
                               std::vector<WuUpdaterComponent>& components,
                               std::string& reason) try {
  for (std::size_t i = kLeastLines; i < lines.size(); ++i) {
    const std::string_view line = lines[i];
    if (LowerCase(line.substr(0, kComponentBeginning.size())) != kComponentBeginning) continue;
    WuUpdaterComponent component;
    if (!TryParseComponent(line.substr(kComponentBeginning.size()), component, reason))
      return false;
    components.push_back(std::move(component));
  }
  for (const WuUpdaterComponent& component : components)
    RequireFileName(component.Name);
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "ParseUpdaterDigestPart");
}

}  // namespace tmw
