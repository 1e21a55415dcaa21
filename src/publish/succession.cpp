#include "publish/succession.h"

#include <algorithm>
#include <map>
#include <set>

#include "foundation/encodings.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "publish/announcement.h"
#include "publish/checker.h"
#include "publish/release_names.h"

namespace publish {
namespace {

bool IsTakenOver(const std::string& table, const Description& description) {
  return std::any_of(
      description.tables.begin(), description.tables.end(),
      [&](const TableRule& rule) { return rule.takes_over && tmw::MatchesMask(table, rule.mask); });
}

void CheckTables(const Manifest& before, const Manifest& manifest, const Description& description,
                 Faults& faults) {
  std::set<std::string> users;
  for (const TableRecord& table : before.tables) {
    if (table.is_user) users.insert(tmw::LowerCase(table.name));
  }
  for (const TableRecord& table : manifest.tables) {
    const bool was_users = !table.is_user && users.contains(tmw::LowerCase(table.name));
    if (was_users && !IsTakenOver(table.name, description))
      faults.Add(table.name, texts::kBecomesDictionary, {before.version});
  }
}

void WarnOfMoves(const Manifest& before, const Manifest& manifest, Faults& faults) {
  std::set<std::string> places;
  std::map<std::string, std::string> folders;  // of the announced release, by file name
  for (const FileRecord& file : before.files) {
    places.insert(InstalledPlace(file));
    folders.emplace(tmw::LowerCase(file.name), file.folder);
  }
  std::set<std::string> new_places;
  for (const FileRecord& file : manifest.files)
    new_places.insert(InstalledPlace(file));
  for (const FileRecord& file : manifest.files) {
    const auto found = folders.find(tmw::LowerCase(file.name));
    if (found == folders.end() || places.contains(InstalledPlace(file))) continue;
    FileRecord old = file;
    old.folder = found->second;
    if (!new_places.contains(InstalledPlace(old)))
      faults.Warn(file.folder + " " + file.name, texts::kMoves, {before.version, old.folder});
  }
}

}  // namespace

void CheckSuccession(const std::string& root, const Manifest& manifest,
                     const Description& description, Faults& faults) {
  Faults ignored;  // of a release that is there already
  const std::string announced = AnnouncedVersion(root, ignored);
  const std::string folder = tmw::JoinPath(root, ReleaseFolder(announced));
  Manifest before;
  if (announced.empty() || !tmw::IsFolderExists(folder) || !LoadManifest(folder, before, ignored))
    return;
  CheckTables(before, manifest, description, faults);
  WarnOfMoves(before, manifest, faults);
}

}  // namespace publish
