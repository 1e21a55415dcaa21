#include "engine/space_look.h"

#include <algorithm>
#include <limits>
#include <map>

#include "database/database_paths.h"
#include "engine/installed_files.h"
#include "engine/run_messages.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "product/look_texts.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "services/product_settings.h"

namespace tmw {
namespace {

// What the content of tables and of the database packages may be larger by than their packages:
// texts like these shrink to a sixth or an eighth.
constexpr std::int64_t kTextGrowth = 8;

// Both built databases, and for the engine's working store three databases and the largest table.
constexpr std::int64_t kBuiltDatabases = 2;
constexpr std::int64_t kStoredDatabases = 3;

std::int64_t LengthOf(const std::string& file) {
  return IsFileExists(file) ? GetFileLength(file) : 0;
}

std::int64_t PartLength(const std::string& package, std::int64_t size) {
  return std::min(LengthOf(package + std::string(names::kPartEnding)), size);
}

std::string ExistingFolder(std::string folder) {
  while (!IsFolderExists(folder)) {
    std::string above = SplitFileName(folder).Folder;
    if (above.empty() || above == folder) break;
    folder = std::move(above);
  }
  return folder;
}

void AddFiles(const Manifest& manifest, const ReleasePaths& release,
              std::vector<SpaceItem>& items) {
  for (const WuFileNode& file : manifest.Files) {
    const ComponentPlaces places = MakeComponentPlaces(release, file.OrigName);
    if (!file.NeedUpdate || LengthOf(places.Loaded) == file.OrigSize) continue;
    items.push_back({file.SrvSize, file.OrigSize, PartLength(places.Part, file.SrvSize)});
  }
}

// What is loaded for the databases. Returns an estimate of the contents, which are not announced.
std::int64_t AddTexts(const Manifest& manifest, const ReleasePaths& release,
                      std::vector<SpaceItem>& items) {
  std::int64_t contents = 0;
  for (const WuTableNode& table : manifest.Tables) {
    const std::string name = table.TableName + std::string(names::kTableEnding);
    const ComponentPlaces places = MakeComponentPlaces(release, name);
    if (!table.NeedUpdate || table.IsUser || IsFileExists(places.Loaded)) continue;
    items.push_back({table.SrvSize, 0, PartLength(places.Part, table.SrvSize)});
    contents += table.SrvSize * kTextGrowth;
  }
  for (const WuPackage& package : {manifest.ScriptsPackage, manifest.StructuresPackage}) {
    items.push_back({package.PackSize, 0, 0});
    contents += package.PackSize * kTextGrowth;
  }
  return contents;
}

std::int64_t LargestTable(const Manifest& manifest) {
  std::int64_t largest = 0;
  for (const WuTableNode& table : manifest.Tables)
    largest = std::max(largest, table.SrvSize * kTextGrowth);
  return largest;
}

// Old files are kept, as second names or as copies, which are made before the old files are removed
// and the new ones come. Those that are replaced in one step stand beside the new ones as well.
std::int64_t GrowthOfFiles(const Manifest& manifest) {
  std::int64_t copies = 0;
  std::int64_t growth = 0;
  std::int64_t largest_own = 0;
  for (const WuFileNode& file : manifest.Files) {
    if (!file.NeedUpdate) continue;
    copies += LengthOf(InstalledPath(file));
    growth += file.OrigSize;
    if (IsUpdatersOwnFile(file)) largest_own = std::max<std::int64_t>(largest_own, file.OrigSize);
  }
  return std::max(copies, growth) + largest_own;
}

ports::DiskSpace SpaceOf(const std::string& folder) {
  const auto space = ports::CurrentPorts().file_probe->SpaceOf(folder);
  return space ? space.value : ports::DiskSpace{folder, std::numeric_limits<std::int64_t>::max()};
}

std::string Words(std::int64_t bytes) {
  return GetFriendlySizeString(static_cast<double>(bytes), false);
}

}  // namespace

std::int64_t DownloadPeak(const std::vector<SpaceItem>& items) {
  std::int64_t taken = 0;
  std::int64_t peak = 0;
  for (const SpaceItem& item : items) {
    peak = std::max(peak, taken + item.Package - item.There + item.Content);
    taken += item.Content - item.There;
  }
  return peak;
}

std::optional<SpaceShortage> FindShortage(const std::vector<SpaceNeed>& needs,
                                          const SpaceOfFolder& space_of) {
  struct Disk {
    SpaceNeed sum;
    std::int64_t largest = -1;
    std::int64_t free = 0;
  };
  std::map<std::string, Disk> disks;
  for (const SpaceNeed& need : needs) {
    const ports::DiskSpace space = space_of(need.Folder);
    Disk& disk = disks[space.disk];
    disk.free = space.free;
    disk.sum.Announced += need.Announced;
    disk.sum.Estimated += need.Estimated;
    const std::int64_t whole = need.Announced + need.Estimated;
    if (whole > disk.largest) {
      disk.largest = whole;
      disk.sum.Folder = need.Folder;
    }
  }
  for (const bool is_certain : {true, false}) {
    for (const auto& [name, disk] : disks) {
      const std::int64_t needed = disk.sum.Announced + (is_certain ? 0 : disk.sum.Estimated);
      if (needed > disk.free) return SpaceShortage{disk.sum.Folder, needed, disk.free, is_certain};
    }
  }
  return std::nullopt;
}

std::vector<SpaceNeed> PlanSpace(const Manifest& manifest, bool is_client,
                                 const ReleasePaths& release, SpaceMoment moment) {
  SpaceNeed loading = {ExistingFolder(release.Folder)};
  SpaceNeed program = {ExistingFolder(GetProductRootPath()), 0, GrowthOfFiles(manifest)};
  std::vector<SpaceItem> items;
  AddFiles(manifest, release, items);
  std::vector<SpaceNeed> needs;
  if (!is_client) {
    const std::int64_t built = LengthOf(BuiltWorkingPath(release.Scripts));
    const std::int64_t user = LengthOf(UserDatabasePlace());
    const std::int64_t database = std::max(user, built);
    loading.Estimated = AddTexts(manifest, release, items) + LargestTable(manifest) +
                        (kBuiltDatabases + kStoredDatabases) * database;
    const std::int64_t reference = LengthOf(InstalledReferencePath());
    const std::int64_t reference_growth = std::max<std::int64_t>(database - reference, 0);
    program.Estimated += reference;  // is kept as a copy
    // The new database stands beside the old one for a moment.
    needs.push_back({ExistingFolder(SplitFileName(UserDatabasePlace()).Folder), 0, database});
    // The backup lies beside the name of the user database, where a link may lead elsewhere.
    needs.push_back({ExistingFolder(SplitFileName(InstalledReferencePath()).Folder), 0,
                     user + reference_growth});
  }
  loading.Announced = DownloadPeak(items);
  needs.push_back(program);
  if (moment == SpaceMoment::kBeforeDownload) needs.push_back(loading);
  return needs;
}

bool HasRoom(const std::vector<SpaceNeed>& needs) {
  const auto shortage = FindShortage(needs, SpaceOf);
  if (!shortage) return true;
  const std::string needed = Words(shortage->Needed);
  const std::string free = Words(shortage->Free);
  if (shortage->IsCertain) {
    DownloadError(look_texts::NoRoom(shortage->Folder, needed, free), FailureKind::kDiskFull);
    return false;
  }
  return AskQuestion(box_titles::kProductUpdate,
                     look_texts::PerhapsNoRoom(shortage->Folder, needed, free));
}

}  // namespace tmw
