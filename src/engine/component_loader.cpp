#include "engine/component_loader.h"

#include <algorithm>
#include <utility>

#include "engine/engine_texts.h"
#include "engine/limits.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "packages/rar_archive.h"
#include "ports/ports.h"
#include "services/message_boxes.h"
#include "services/run_module.h"

namespace tmw {
namespace {

constexpr std::int32_t kNoLength = -1;  // of a table; its text is verified by the hash alone

}  // namespace

ComponentLoader::ComponentLoader(UpdaterEvents& events, ReleasePaths release,
                                 std::string loading_url)
    : events_(events),
      release_(std::move(release)),
      loading_url_(std::move(loading_url)),
      second_try_(events, *ports::CurrentPorts().clock),
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
  DeleteFiles(JoinPath(release_.Scripts, std::string(names::kScriptMask)), true);
  DeleteFiles(JoinPath(release_.Structures, "*" + std::string(names::kTableStructureEnding)), true);
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
  if (!IsLoadedFileReusable(places.Loaded, expected)) {
    if (!Transfer(url, places.Part)) return false;
    if (!UnpackComponent(places, expected)) return false;
    if (!VerifyComponent(places.Unpacked, expected)) return false;
    MoveFile(places.Unpacked, places.Loaded);
    if (!IsFileExists(places.Loaded)) {
      DownloadError(engine_texts::NotMovedToLoaded(expected.Name, release_.Loaded));
      return false;
    }
  }
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
  if (!Transfer(url, file)) return false;
  if (!VerifyPackage(url, file, package)) return false;
  if (empty_folder_first) DeleteFiles(JoinPath(folder, "*.*"));
  std::string reason;
  const bool is_unpacked = UnrarAllFiles(file, folder, "", reason);
  if (!is_unpacked) DownloadError(engine_texts::PackageNotUnpacked(file, reason));
  DeleteFile(file);
  if (is_unpacked) FinishFileProgress();
  return is_unpacked;
} catch (...) {
  ReRaiseError(kRunModule, "DownloadSrvMiltiFiles");
}

bool ComponentLoader::Transfer(const std::string& url, const std::string& target) {
  url_ = url;
  const auto download = [&] {
    received_ = 0;
    is_too_much_ = false;
    try {
      return downloader_.DownloadFile(url, target, true);
    } catch (...) {
      // A later run must not continue this part: it is too long already.
      if (is_too_much_) DeleteFile(target + std::string(names::kPartEnding), true);
      throw;
    }
  };
  if (second_try_.Run(url, download)) return true;
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

void ComponentLoader::OnChunkLoaded(bool /*is_skipped*/, std::int32_t byte_count) try {
  AddChecked(received_, byte_count);
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
  is_cancelled = !second_try_.MayGoOn();
} catch (...) {
  ReRaiseError(kRunModule, "fLoader_OnCheckCancel");
}

}  // namespace tmw
