#include <limits>
#include <map>
#include <optional>
#include <set>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/path_guard.h"
#include "foundation/protected_names.h"
#include "foundation/text.h"
#include "publish/fault_texts.h"
#include "publish/manifest.h"
#include "publish/release_names.h"

namespace publish {
namespace {

// The folder as the updater expands it, on a machine with the product in kSomeRoot.
constexpr const char* kSomeRoot = "C:\\Tamrin";

std::optional<std::string> Expand(const std::string& folder) {
  std::string text = folder;
  std::size_t position = 0;
  while ((position = text.find('{', position)) != std::string::npos) {
    const bool is_escaped = text.compare(position, 2, "{{") == 0;
    const std::size_t end = text.find(is_escaped ? "}}" : "}", position + (is_escaped ? 2 : 1));
    if (end == std::string::npos) break;
    if (is_escaped) {
      text.erase(end, 1).erase(position, 1);
      position = end - 1;
      continue;
    }
    if (text.substr(position, end + 1 - position) != "{p}") return std::nullopt;
    const std::string root = std::string(kSomeRoot) + "\\";
    text.replace(position, 3, root);
    position += root.size();
  }
  return text;
}

void CheckNames(const FileRecord& file, const std::string& place, Faults& faults) {
  faults.Require(tmw::CheckFileName(file.name), place);
  if (tmw::IsUserDatabaseName(file.name)) faults.Add(place, texts::kUsersOwn);
  if (tmw::IsUpdatersNote(file.name) || tmw::IsUpdatersFolder(file.folder))
    faults.Add(place, texts::kUpdatersNotes);
  faults.Require(tmw::CheckRelativeName(file.server_name), place);
  const std::optional<std::string> folder = Expand(file.folder);
  if (!folder) {
    faults.Add(place, texts::kUnknownConstant, {file.folder});
  } else {
    faults.Require(tmw::CheckFolderUnderRoot(*folder, kSomeRoot), place);
  }
}

bool HasSameContent(const FileRecord& a, const FileRecord& b) {
  return a.length == b.length && a.hash == b.hash;
}

void CheckFiles(const Manifest& manifest, std::map<std::string, const FileRecord*>& by_name,
                Faults& faults) {
  std::map<std::string, std::string> by_place;
  std::map<std::string, std::string> by_server_name;
  for (const FileRecord& file : manifest.files) {
    const std::string place = file.folder + " " + file.name;
    CheckNames(file, place, faults);
    const auto [same_place, is_new_place] = by_place.emplace(InstalledPlace(file), place);
    if (!is_new_place) faults.Add(place, texts::kSamePlace, {same_place->second});
    const auto [same_server, is_new_server] =
        by_server_name.emplace(tmw::LowerCase(file.server_name), place);
    if (!is_new_server) faults.Add(place, texts::kSameServerName, {same_server->second});
    const auto [same_name, is_new_name] = by_name.emplace(tmw::LowerCase(file.name), &file);
    if (!is_new_name && !HasSameContent(*same_name->second, file))
      faults.Add(place, texts::kTwoContents, {same_name->second->folder});
  }
}

void CheckServerNames(const Manifest& manifest, Faults& faults) {
  const auto check = [&](const std::string& server_name, const std::string& place) {
    if (!FitsAddresses(server_name)) faults.Add(place, texts::kFitsNoAddress);
  };
  for (const FileRecord& file : manifest.files)
    check(file.server_name, file.folder + " " + file.name);
  // A user table has no file of its own on the server; it is in the package of structures.
  for (const TableRecord& table : manifest.tables) {
    if (!table.is_user) check(table.name, table.name);
  }
  for (const PackageRecord& package : {manifest.scripts, manifest.structures})
    check(package.server_name, package.server_name);
}

}  // namespace

void CheckManifest(const Manifest& manifest, Faults& faults) {
  std::map<std::string, const FileRecord*> files;
  CheckFiles(manifest, files, faults);
  CheckServerNames(manifest, faults);
  std::set<std::string> tables;
  for (const TableRecord& table : manifest.tables) {
    const std::string& name = table.name;
    faults.Require(tmw::CheckFileName(name), name);
    if (!tables.insert(tmw::LowerCase(name)).second) faults.Add(name, texts::kTableTwice);
    if (tmw::IsReservedTable(name)) faults.Add(name, texts::kVersionTable);
    if (files.contains(tmw::LowerCase(name + std::string(tmw::names::kTableEnding))))
      faults.Add(name, texts::kFileOfTable);
  }
  if (WholeVolume(manifest) > std::numeric_limits<std::int32_t>::max())
    faults.Add(texts::kInManifest, texts::kTooMuch);
}

void WarnOfCompanions(const Manifest& manifest, Faults& faults) {
  constexpr std::string_view kScript = ".tms";
  constexpr std::string_view kCompanion = ".xml";
  std::map<std::string, const FileRecord*> by_place;
  for (const FileRecord& file : manifest.files)
    by_place.emplace(InstalledPlace(file), &file);
  for (const auto& [place, file] : by_place) {
    if (!place.ends_with(kScript)) continue;
    const auto companion =
        by_place.find(place.substr(0, place.size() - kScript.size()) + std::string(kCompanion));
    if (companion != by_place.end())
      faults.Warn(file->folder + " " + file->name, texts::kScriptCompanion,
                  {companion->second->name});
  }
}

}  // namespace publish
