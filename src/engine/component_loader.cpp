#include "engine/component_loader.h"

#include <algorithm>
#include <utility>

#include "engine/engine_texts.h"
#include "engine/fetching.h"
#include "engine/limits.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "packages/rar_archive.h"
#include "services/message_boxes.h"
#include "services/run_log.h"
#include "services/run_module.h"

namespace tmw {

ComponentLoader::ComponentLoader(UpdaterEvents& events, ReleasePaths release,
                                 std::string loading_url)
    : events_(events),
      release_(std::move(release)),
      loading_url_(std::move(loading_url)),
      downloader_(static_cast<DownloaderEvents&>(*this)) {}

bool ComponentLoader::DownloadNecessaryFiles(const Manifest& manifest, std::int32_t volume,
                                             bool is_client) {
  events_.OnSetMainAction(engine_texts::kDownloading);
  events_.OnSetupProgress(volume, true);
  const bool result =
      DownloadFiles(manifest.Files) &&
      (is_client || (DownloadTables(manifest.Tables) && DownloadDatabasePackages(manifest)));
  events_.ClearProgress();
  return result;
}

bool ComponentLoader::DownloadFiles(const std::vector<WuFileNode>& files) {
  for (const WuFileNode& file : files) {
    if (file.NeedUpdate) {
      const ComponentFacts expected{file.OrigName, file.PackType, file.SrvSize, file.OrigSize,
                                    file.Hash};
      if (!DownloadSrvFile(expected, file.SrvName)) return false;
    }
    if (events_.CancelPressed()) return false;
  }
  return true;
}

bool ComponentLoader::DownloadTables(const std::vector<WuTableNode>& tables) {
  for (const WuTableNode& table : tables) {
    if (table.NeedUpdate) {
      const ComponentFacts expected{table.TableName + std::string(names::kTableEnding), kPackText,
                                    table.SrvSize, kNoLength, table.Hash};
      // The name on the server is made from the table's name; SrvFile does not count.
      if (!DownloadSrvFile(expected, table.TableName + std::string(names::kPackedTableEnding)))
        return false;
    }
    if (events_.CancelPressed()) return false;
  }
  return true;
}

bool ComponentLoader::DownloadDatabasePackages(const Manifest& manifest) {
  // An earlier form of the same release may have left files that this one does not have.
  DeleteFiles(JoinPath(release_.Scripts, std::string(names::kScriptMask)));
  DeleteFiles(JoinPath(release_.Structures, "*" + std::string(names::kTableStructureEnding)));
  return DownloadSrvMiltiFiles(release_.Scripts, manifest.ScriptsPackage, false) &&
         !events_.CancelPressed() &&
         DownloadSrvMiltiFiles(release_.Structures, manifest.StructuresPackage, false) &&
         !events_.CancelPressed();
}

bool ComponentLoader::DownloadSrvFile(const ComponentFacts& expected,
                                      const std::string& server_name) try {
  const std::string url = loading_url_ + "/" + server_name;
  const ComponentPlaces places = MakeComponentPlaces(release_, expected.Name);
  StartFileProgress(expected.ServerSize);
  events_.OnSetSubAction(url);
  events_.OnSetComponent(expected.Name);
  if (!IsLoadedFileReusable(places.Loaded, expected)) {
    const Check check = [&](std::string& fault) {
      return TryUnpackComponent(places, expected, fault) &&
             TryVerifyComponent(places.Unpacked, expected, fault);
    };
    if (!Fetch(url, places.Part, check)) return false;
    MoveFile(places.Unpacked, places.Loaded);
    if (!IsFileExists(places.Loaded)) {
      DownloadError(engine_texts::NotMovedToLoaded(expected.Name, release_.Loaded),
                    FailureKind::kVanished);
      return false;
    }
  }
  LogEvent("ready", {{"file", places.Loaded}});
  FinishFileProgress();
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "DownloadSrvFile");
}

bool ComponentLoader::DownloadSrvMiltiFiles(const std::string& folder, const WuPackage& package,
                                            bool empty_folder_first) try {
  const std::string url = loading_url_ + "/" + package.SrvName;
  const std::string file = JoinPath(folder, package.SrvName);
  StartFileProgress(package.PackSize);
  events_.OnSetSubAction(url);
  events_.OnSetComponent(package.SrvName);
  const Check check = [&](std::string& fault) {
    return TryVerifyPackage(url, file, package, fault);
  };
  if (!Fetch(url, file, check)) return false;
  if (empty_folder_first) DeleteFiles(JoinPath(folder, "*.*"));
  std::string reason;
  const bool is_unpacked = UnrarAllFiles(file, folder, "", reason, MaxUnpacked(package.PackSize));
  if (!is_unpacked) DownloadError(engine_texts::PackageNotUnpacked(file, reason), KindOfRefusal());
  DeleteFile(file);
  if (is_unpacked) FinishFileProgress();
  return is_unpacked;
} catch (...) {
  ReRaiseError(kRunModule, "DownloadSrvMiltiFiles");
}

bool ComponentLoader::Fetch(const std::string& url, const std::string& target, const Check& check) {
  for (const bool may_continue : {true, false}) {
    if (!Transfer(url, target, may_continue)) return false;
    std::string fault;
    const bool is_good = check(fault);
    LogEvent("checked", {{"file", target}, {"good", is_good}, {"fault", fault}});
    if (is_good) return true;
    if (has_resumed_ && may_continue) continue;
    DownloadError(fault, KindOfRefusal());
    break;
  }
  return false;
}

bool ComponentLoader::Transfer(const std::string& url, const std::string& target,
                               bool may_continue) {
  url_ = url;
  received_ = 0;
  is_too_much_ = has_resumed_ = false;
  // A part that is too long is of another release.
  const std::string part = target + std::string(names::kPartEnding);
  if (IsFileExists(part) && GetFileLength(part) > end_ - start_) DeleteFile(part);
  const auto download = [&] {
    try {
      return downloader_.DownloadFile(url, target, may_continue);
    } catch (...) {
      // A later run must not continue this part.
      if (is_too_much_) DeleteFile(part, true);
      throw;
    }
  };
  if (RunTransfer(events_, url, download)) return true;
  if (!downloader_.Cancelled() && !events_.CancelPressed())
    DownloadError(engine_texts::NotLoaded(url));
  return false;
}

void ComponentLoader::StartFileProgress(std::int32_t bytes) try {
  start_ = position_;
  end_ = start_;
  AddChecked(end_, bytes);
  received_ = 0;
  events_.OnSetProgress(start_);
} catch (...) {
  ReRaiseError(kRunModule, "StartFileProgress");
}

void ComponentLoader::FinishFileProgress() try {
  position_ = end_;
  events_.OnSetProgress(position_);
} catch (...) {
  ReRaiseError(kRunModule, "FinishFileProgress");
}

void ComponentLoader::OnChunkLoaded(bool is_skipped, std::int32_t byte_count) try {
  if (is_skipped) {
    received_ = byte_count;
    has_resumed_ |= byte_count > 0;
  } else {
    AddChecked(received_, byte_count);
  }
  const std::int32_t announced = end_ - start_;
  if (received_ > MaxComponent(announced)) {
    is_too_much_ = true;
    RaiseProgramError(engine_texts::TooMuchReceived(url_));
  }
  position_ = start_ + std::min(received_, announced);
  events_.OnSetProgress(position_);
} catch (...) {
  ReRaiseError(kRunModule, "fLoader_OnChunkLoaded");
}

void ComponentLoader::OnCheckCancel(bool& is_cancelled) try {
  is_cancelled = events_.CancelPressed();
} catch (...) {
  ReRaiseError(kRunModule, "fLoader_OnCheckCancel");
}

}  // namespace tmw
