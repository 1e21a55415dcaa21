#include "engine/run_record.h"

#include "foundation/file_names.h"
#include "services/run_log.h"

namespace tmw {

void RecordVersions(const Digest& digest, const std::string& installed) {
  LogEvent("versions", {{"installed", installed},
                        {"offered", digest.Version},
                        {"is_updater_old", digest.Updater == UpdaterVersionCheck::kUpdateNeeded}});
}

void RecordManifest(const std::string& loading_url, const Manifest& manifest) {
  LogEvent("manifest", {{"address", loading_url},
                        {"release", manifest.VersionID},
                        {"files", manifest.Files.size()},
                        {"tables", manifest.Tables.size()}});
}

void RecordNeed(const Manifest& manifest, const UpdateNeed& need) {
  for (const WuFileNode& file : manifest.Files) {
    if (file.NeedUpdate) {
      LogEvent("needed", {{"file", JoinPath(file.Folder, file.OrigName)}, {"bytes", file.SrvSize}});
    }
  }
  for (const WuTableNode& table : manifest.Tables) {
    if (table.NeedUpdate)
      LogEvent("needed", {{"table", table.TableName}, {"bytes", table.SrvSize}});
  }
  LogEvent("need",
           {{"files", need.Files}, {"tables", need.Tables}, {"bytes", need.DownloadVolume}});
}

}  // namespace tmw
