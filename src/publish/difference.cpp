#include "publish/difference.h"

#include <map>
#include <set>

#include "foundation/encodings.h"

namespace publish {

Difference Compare(const Manifest& old_release, const Manifest& new_release) {
  std::map<std::string, const FileRecord*> old_files;
  for (const FileRecord& file : old_release.files)
    old_files.emplace(InstalledPlace(file), &file);
  std::map<std::string, std::string> old_tables;
  for (const TableRecord& table : old_release.tables)
    old_tables.emplace(tmw::LowerCase(table.name), table.hash);

  Difference result;
  result.old_version = old_release.version;
  result.new_version = new_release.version;
  const auto add = [&](Download download) {
    result.volume += download.bytes;
    if (download.kind == DownloadKind::kFile) result.client_volume += download.bytes;
    result.downloads.push_back(std::move(download));
  };
  std::set<std::string> new_places;
  for (const FileRecord& file : new_release.files) {
    const std::string place = InstalledPlace(file);
    new_places.insert(place);
    const auto old_file = old_files.find(place);
    const bool is_new = old_file == old_files.end();
    if (!is_new && old_file->second->length == file.length && old_file->second->hash == file.hash)
      continue;
    add({DownloadKind::kFile, file.folder + " " + file.name, file.server_length, is_new});
  }
  for (const TableRecord& table : new_release.tables) {
    if (table.is_user) continue;
    const auto old_table = old_tables.find(tmw::LowerCase(table.name));
    const bool is_new = old_table == old_tables.end();
    if (!is_new && old_table->second == table.hash) continue;
    add({DownloadKind::kDictionary, table.name, table.server_length, is_new});
  }
  if (!result.downloads.empty()) {  // otherwise the updater finds nothing to do
    for (const PackageRecord& package : {new_release.scripts, new_release.structures})
      add({DownloadKind::kPackage, package.server_name, package.length, false});
  }
  for (const FileRecord& file : old_release.files) {
    if (!new_places.contains(InstalledPlace(file)))
      result.left_over.push_back(file.folder + " " + file.name);
  }
  return result;
}

}  // namespace publish
