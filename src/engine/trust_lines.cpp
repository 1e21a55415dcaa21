#include "engine/trust_lines.h"

#include "engine/engine_texts.h"
#include "foundation/encodings.h"
#include "foundation/number_text.h"
#include "foundation/text.h"
#include "foundation/utc_day.h"
#include "packages/hash_api.h"

namespace tmw {
namespace {

constexpr std::string_view kManifest = "manifest:";
constexpr std::string_view kProduct = "product:";
constexpr std::string_view kSerial = "serial:";
constexpr std::string_view kExpires = "expires:";

// What follows the name in each line that begins with it; the digest's first two lines are others.
std::vector<std::string> ValuesOf(const std::vector<std::string>& lines, std::string_view name) {
  std::vector<std::string> values;
  for (std::size_t i = 2; i < lines.size(); ++i) {
    const std::string_view line = lines[i];
    if (LowerCase(line.substr(0, name.size())) == name)
      values.emplace_back(line.substr(name.size()));
  }
  return values;
}

bool Refuse(std::string_view name, const char* fault, std::string& reason) {
  reason = engine_texts::DigestLineFault(std::string(name.substr(0, name.size() - 1)), fault);
  return false;
}

bool TryReadOnly(const std::vector<std::string>& lines, std::string_view name, std::string& value,
                 std::string& reason) {
  const std::vector<std::string> values = ValuesOf(lines, name);
  if (values.empty()) return Refuse(name, engine_texts::kLineMissing, reason);
  if (values.size() > 1) return Refuse(name, engine_texts::kLineTwice, reason);
  value = values.front();
  return true;
}

std::optional<BoundPackage> ReadBoundPackage(const std::string& text) {
  const std::vector<std::string> fields = Split(text, "|");
  if (fields.size() != 2) return std::nullopt;
  const std::optional<std::int64_t> size = ReadWholeNumber(fields[0]);
  if (!size || !IsHashText(fields[1])) return std::nullopt;
  return BoundPackage{*size, fields[1]};
}

}  // namespace

bool TryReadManifestLine(const std::vector<std::string>& lines,
                         std::optional<BoundPackage>& manifest, std::string& reason) {
  if (ValuesOf(lines, kManifest).empty()) return true;
  std::string value;
  if (!TryReadOnly(lines, kManifest, value, reason)) return false;
  manifest = ReadBoundPackage(value);
  return manifest || Refuse(kManifest, engine_texts::kLineMalformed, reason);
}

bool TryReadTrustLines(const std::vector<std::string>& lines, TrustLines& trust,
                       std::string& reason) {
  std::string manifest;
  std::string serial;
  std::string expires;
  if (!TryReadOnly(lines, kProduct, trust.Product, reason) ||
      !TryReadOnly(lines, kManifest, manifest, reason) ||
      !TryReadOnly(lines, kSerial, serial, reason) ||
      !TryReadOnly(lines, kExpires, expires, reason)) {
    return false;
  }
  if (!ReadBoundPackage(manifest)) return Refuse(kManifest, engine_texts::kLineMalformed, reason);
  const std::optional<std::int64_t> number = ReadWholeNumber(serial);
  if (!number) return Refuse(kSerial, engine_texts::kLineMalformed, reason);
  trust.Serial = *number;
  const std::optional<std::int64_t> day = ReadUtcDay(expires);
  if (!day) return Refuse(kExpires, engine_texts::kLineMalformed, reason);
  trust.LastDay = *day;
  return true;
}

}  // namespace tmw
