#include "publish/digest.h"

#include <charconv>
#include <set>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/file_names.h"
#include "foundation/number_text.h"
#include "foundation/path_guard.h"
#include "foundation/text.h"
#include "foundation/utc_day.h"
#include "foundation/version.h"
#include "packages/hash_api.h"
#include "publish/fault_texts.h"
#include "publish/release_names.h"

namespace publish {
namespace {

constexpr std::string_view kUpdaterLine = "updater:";
const std::string kManifestLine = "manifest:";
const std::string kProductLine = "product:";
const std::string kSerialLine = "serial:";
const std::string kExpiresLine = "expires:";

void ReadUpdaterLine(const std::string& line, Digest& digest, Faults& faults) {
  const std::vector<std::string> fields =
      tmw::Split(std::string_view(line).substr(kUpdaterLine.size()), "|");
  if (fields.size() < 3) {
    faults.Add(line, texts::kFewFields);
    return;
  }
  UpdaterFile file{fields[0], -1, tmw::Trim(fields[2])};
  const std::string size = tmw::Trim(fields[1]);
  std::int32_t length = -1;
  const auto read = std::from_chars(size.data(), size.data() + size.size(), length);
  if (read.ec != std::errc() || read.ptr != size.data() + size.size() || length < 0)
    faults.Add(line, texts::kNoSize);
  file.length = length;
  if (!tmw::IsHashText(file.hash)) faults.Add(line, texts::kNoHash);
  faults.Require(tmw::CheckFileName(file.name), line);
  if (!FitsAddresses(file.name)) faults.Add(line, texts::kFitsNoAddress);
  for (const UpdaterFile& other : digest.files) {
    if (tmw::EqualIgnoringCase(other.name, file.name)) faults.Add(line, texts::kNameTwice);
  }
  digest.files.push_back(std::move(file));
}

// The value of the one line of that name, nothing if there is none. The later ones are faults.
std::optional<std::string> OnlyValue(const std::vector<std::string>& lines, const std::string& name,
                                     Faults& faults) {
  std::optional<std::string> value;
  for (std::size_t i = 2; i < lines.size(); ++i) {
    if (tmw::LowerCase(lines[i].substr(0, name.size())) != name) continue;
    if (value) {
      faults.Add(lines[i], texts::kLineTwice, {name});
    } else {
      value = lines[i].substr(name.size());
    }
  }
  return value;
}

void ReadManifestLine(const std::vector<std::string>& lines, Digest& digest, Faults& faults) {
  const auto value = OnlyValue(lines, kManifestLine, faults);
  if (!value) return;
  const std::vector<std::string> fields = tmw::Split(*value, "|");
  const auto length = tmw::ReadWholeNumber(fields[0]);
  if (fields.size() == 2 && length && tmw::IsHashText(fields[1])) {
    digest.manifest = BoundManifest{*length, fields[1]};
  } else {
    faults.Add(kManifestLine + *value, texts::kNotSizeAndHash);
  }
}

// The three lines that come with a signature.
void ReadSignedPart(const std::vector<std::string>& lines, Digest& digest, Faults& faults) {
  const auto product = OnlyValue(lines, kProductLine, faults);
  const auto serial = OnlyValue(lines, kSerialLine, faults);
  const auto expires = OnlyValue(lines, kExpiresLine, faults);
  const auto number = serial ? tmw::ReadWholeNumber(*serial) : std::nullopt;
  if (serial && !number) faults.Add(kSerialLine + *serial, texts::kNotWholeNumber);
  const auto day = expires ? tmw::ReadUtcDay(*expires) : std::nullopt;
  if (expires && !day) faults.Add(kExpiresLine + *expires, texts::kNoDay);
  if (product && number && day) digest.signed_part = SignedPart{*product, *number, *day};
}

}  // namespace

std::vector<std::string> LinesOf(const std::string& text, const std::string& place,
                                 Faults& faults) {
  std::vector<std::string> lines = tmw::Split(text, tmw::kCrLf);
  for (const std::string& line : lines) {
    if (line.find_first_of(tmw::kCrLf) == std::string::npos) continue;
    faults.Add(place, texts::kWrongLineEnds);
    break;
  }
  return lines;
}

std::string WriteDigest(const Digest& digest) {
  std::string text = digest.version + "\r\n" + digest.needed_updater + "\r\n";
  for (const UpdaterFile& file : digest.files) {
    text.append(kUpdaterLine)
        .append(file.name + "|" + std::to_string(file.length) + "|" + file.hash)
        .append(tmw::kCrLf);
  }
  if (digest.manifest) {
    text += kManifestLine + std::to_string(digest.manifest->length) + "|" + digest.manifest->hash +
            "\r\n";
  }
  if (digest.signed_part) {
    text += kProductLine + digest.signed_part->product + "\r\n" + kSerialLine +
            std::to_string(digest.signed_part->serial) + "\r\n" + kExpiresLine +
            tmw::UtcDayText(digest.signed_part->last_day) + "\r\n";
  }
  return text;
}

Digest ReadDigest(const std::string& text, Faults& faults) {
  const std::string place(tmw::names::kDigestFile);
  const std::vector<std::string> lines = LinesOf(text, place, faults);
  Digest digest;
  if (lines.size() < 2) {
    faults.Add(place, texts::kFewLines);
    return digest;
  }
  if (IsVersion(lines[0], 4)) {
    digest.version = lines[0];
  } else {
    faults.Add(place, texts::kNoVersion);
  }
  digest.needed_updater = lines[1];
  if (!IsVersion(lines[1], 2) && !IsVersion(lines[1], 3) && !IsVersion(lines[1], 4))
    faults.Add(place, texts::kNoNeededUpdater);
  for (std::size_t i = 2; i < lines.size(); ++i) {
    if (tmw::LowerCase(lines[i].substr(0, kUpdaterLine.size())) == kUpdaterLine)
      ReadUpdaterLine(lines[i], digest, faults);
  }
  ReadManifestLine(lines, digest, faults);
  ReadSignedPart(lines, digest, faults);
  std::vector<std::string> names;
  for (const UpdaterFile& file : digest.files)
    names.push_back(file.name);
  CheckUpdater(digest.needed_updater, names, place, faults);
  return digest;
}

void CheckUpdater(const std::string& needed_updater, const std::vector<std::string>& files,
                  const std::string& place, Faults& faults) {
  std::int32_t numbers[4] = {};
  std::int32_t count = 0;
  // Only the second number decides whether an updater replaces itself.
  const bool is_read = tmw::ParseVersionString(needed_updater, numbers[0], numbers[1], numbers[2],
                                               numbers[3], count);
  if (is_read && numbers[1] > 0 && files.empty())
    faults.Add(place, texts::kOldUpdatersStop, {needed_updater});
  if (files.empty()) return;
  const std::string ending = tmw::LowerCase(tmw::SplitFileName(files.front()).Extension);
  if (ending == "dll" || ending == "so" || ending == "ocx")
    faults.Add(place, texts::kNoProgram, {files.front()});
}

bool IsVersion(const std::string& text, int count) {
  std::int32_t numbers[4] = {};
  std::int32_t found = 0;
  if (!tmw::ParseVersionString(text, numbers[0], numbers[1], numbers[2], numbers[3], found))
    return false;
  for (const std::string& number : tmw::Split(text, ".")) {
    if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos) return false;
  }
  return found == count;
}

}  // namespace publish
