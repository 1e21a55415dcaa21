#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/records.h"
#include "engine/working_folders.h"
#include "ports/file_probe.h"

// Whether the disks concerned have room for an update. All sizes are bytes.
namespace tmw {

struct SpaceNeed {
  std::string Folder;          // exists
  std::int64_t Announced = 0;  // what is needed in any case
  std::int64_t Estimated = 0;  // what may be needed besides
};

struct SpaceShortage {
  std::string Folder;
  std::int64_t Needed = 0;
  std::int64_t Free = 0;
  bool IsCertain = false;  // not even the announced sizes fit
};

// A component that is to be loaded: its package and then its content come to lie on the disk, and
// the package is deleted.
struct SpaceItem {
  std::int64_t Package = 0;
  std::int64_t Content = 0;  // 0 if it is not announced
  std::int64_t There = 0;    // of the package, from an interrupted run
};

// The most room that loading the components one after another takes up at any moment.
std::int64_t DownloadPeak(const std::vector<SpaceItem>& items);

using SpaceOfFolder = std::function<ports::DiskSpace(const std::string& folder)>;

// The needs of folders on one disk add up. A certain shortage goes before one that is only
// possible; the folder is the one that needs most on its disk.
std::optional<SpaceShortage> FindShortage(const std::vector<SpaceNeed>& needs,
                                          const SpaceOfFolder& space_of);

enum class SpaceMoment { kBeforeDownload, kBeforeRemoval };

// In the temporary folder: what is still to be loaded, the two databases that are built and the
// engine's working store. In the product's folders: the old files that are kept beside the new
// ones, the new databases and the backup.
std::vector<SpaceNeed> PlanSpace(const Manifest& manifest, bool is_client,
                                 const ReleasePaths& release, SpaceMoment moment);

// Returns false after reporting that there is too little room, or if the user does not want to go
// on with what may be too little. A disk that does not say how much is free is taken for large.
bool HasRoom(const std::vector<SpaceNeed>& needs);

}  // namespace tmw
