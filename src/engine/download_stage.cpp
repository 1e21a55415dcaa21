#include <algorithm>

#include "engine/checked_sum.h"
#include "engine/component_check.h"
#include "engine/engine_texts.h"
#include "engine/ks_updater.h"
#include "engine/limits.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "packages/hash_api.h"
#include "packages/rar_archive.h"
#include "ports/clock.h"
#include "ports/ports.h"
#include "services/updater_settings.h"
#include "transfer/inet.h"
#include "transfer/transfer_texts.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";
constexpr std::int32_t kNoLength = -1;  // a table's length is not known
constexpr std::int64_t kRest = 1000;    // milliseconds; events alone take less

// A connection that breaks off does not tell by itself which file it was about to bring.
ProgramError WithUrl(ProgramError error, const std::string& url) {
  if (error.Description.find(url) == std::string::npos) {
    error.Description = transfer_texts::LoadingFailed(url) + std::string(kCrLf) + error.Description;
  }
  return error;
}

}  // namespace

bool KsUpdater::CreateDownloadingFolder() try {
  release_ = MakeReleasePaths(temp_dir_, version_id_);
  for (const std::string& folder :
       {release_.Folder, release_.Parts, release_.Loaded, release_.Scripts, release_.Structures}) {
    CreateFolderIfAbsent(folder);
  }
  return true;
} catch (...) {
  ReRaiseError(kModule, "CreateDownloadingFolder");
}

bool KsUpdater::DownloadNecessaryFiles() try {
  DownloaderEvents& listener = *this;
  downloader_ = std::make_unique<InetFileDownloader>(listener);
  SetMainAction(engine_texts::kDownloading);
  SetupProgress(download_volume_, true);
  progress_position_ = 0;
  const bool result = DownloadFiles() && (GetUpdaterSettings().IsClientInstallation ||
                                          (DownloadTables() && DownloadDatabasePackages()));
  ClearProgress();
  downloader_.reset();
  return result;
} catch (...) {
  ReRaiseError(kModule, "DownloadNecessaryFiles");
}

bool KsUpdater::DownloadFiles() {
  for (const WuFileNode& file : files_) {
    if (file.NeedUpdate && !DownloadSrvFile(file.OrigName, file.SrvName, file.PackType,
                                            file.SrvSize, file.OrigSize, file.Hash)) {
      return false;
    }
    if (CancelPressed()) return false;
  }
  return true;
}

bool KsUpdater::DownloadTables() {
  for (const WuTableNode& table : tables_) {
    const std::string name = table.TableName + std::string(names::kTableEnding);
    // The server's name is always made of the table's, whatever the manifest calls the file.
    if (table.NeedUpdate &&
        !DownloadSrvFile(name, table.TableName + std::string(names::kPackedTableEnding), kPackText,
                         table.SrvSize, kNoLength, table.Hash)) {
      return false;
    }
    if (CancelPressed()) return false;
  }
  return true;
}

bool KsUpdater::DownloadDatabasePackages() {
  // What an earlier form of the release has left; the packages bring all that counts.
  DeleteFiles(JoinPath(release_.Scripts, std::string(names::kScriptMask)), true);
  DeleteFiles(JoinPath(release_.Structures, "*" + std::string(names::kTableStructureEnding)), true);
  return DownloadSrvMiltiFiles(release_.Scripts, scripts_package_, false) && !CancelPressed() &&
         DownloadSrvMiltiFiles(release_.Structures, structures_package_, false) && !CancelPressed();
}

// From the server that was set, or the one behind it.
bool KsUpdater::FetchSmallFile(const std::string& name, const std::string& local,
                               std::string (*failure)(const std::string& reason)) {
  std::string reason;
  const std::string fallback = fallback_url_.empty() ? "" : fallback_url_ + name;
  const bool is_loaded = TryDownloadFileFromTwoUrls(
      url_ + name, fallback, local, reason, kMaxSmallFile, [this] { return !CancelPressed(); });
  if (!is_loaded && !CancelPressed()) DownloadError(failure(reason));
  return is_loaded;
}

bool KsUpdater::Fetch(const std::string& url, const std::string& local, std::int64_t max_bytes) {
  return Attempt(url, [&] {
    DownloadFile(url, local, max_bytes, [this] { return MayTransfer(); });
    return true;
  });
}

bool KsUpdater::Transfer(const std::string& url, const std::string& target) {
  transfer_url_ = url;
  const auto download = [&] {
    too_much_received_ = false;
    try {
      return downloader_->DownloadFile(url, target, true);
    } catch (...) {
      // Nothing that a later run could continue: its first look would fail on the same bytes.
      if (too_much_received_) DeleteFile(target + std::string(names::kPartEnding), true);
      throw;
    }
  };
  if (Attempt(url, download)) return true;
  if (!downloader_->Cancelled() && !CancelPressed()) DownloadError(engine_texts::NotLoaded(url));
  return false;
}

// False when the user has cancelled; he knows why the file does not come. Nothing is read while a
// question stands, and a server grows tired of waiting: a failure after that is worth a second try.
bool KsUpdater::Attempt(const std::string& url, const std::function<bool()>& transfer) {
  for (bool is_second = false;; is_second = true) {
    has_rested_ = false;
    file_received_ = 0;
    try {
      return transfer();
    } catch (...) {
      if (CancelPressed()) return false;
      if (is_second || !has_rested_) throw WithUrl(CurrentError(), url);
    }
  }
}

// The one place where events run during a transfer, and with them a question to the user.
bool KsUpdater::MayTransfer() {
  const auto now = [] { return ports::CurrentPorts().clock->TickCount(); };
  const std::int64_t begin = now();
  const bool is_cancelled = CancelPressed();
  if (now() - begin >= kRest) has_rested_ = true;
  return !is_cancelled;
}

bool KsUpdater::DownloadSrvFile(const std::string& name, const std::string& server_name,
                                std::int32_t pack_method, std::int32_t server_size,
                                std::int32_t expected_length,
                                const std::string& expected_hash) try {
  const std::string url = loading_url_ + "/" + server_name;
  const std::string loaded = LoadedPath(release_, name);
  StartFileProgress(server_size);
  SetSubAction(url);
  const ComponentFacts expected{name, pack_method, server_size, expected_length, expected_hash};
  if (!IsLoadedFileReusable(loaded, expected)) {
    if (!Transfer(url, PartPath(release_, name))) return false;
    if (!UnpackComponent(release_, expected)) return false;
    if (!VerifyComponent(release_, expected)) return false;
    MoveFile(UnpackedPath(release_, name), loaded);
    if (!IsFileExists(loaded)) {
      DownloadError(engine_texts::NotMovedToLoaded(name, release_.Loaded));
      return false;
    }
  }
  FinishFileProgress();
  return true;
} catch (...) {
  ReRaiseError(kModule, "DownloadSrvFile");
}

bool KsUpdater::DownloadSrvMiltiFiles(const std::string& folder, const WuPackage& package,
                                      bool empty_folder_first) try {
  const std::string url = loading_url_ + "/" + package.SrvName;
  const std::string file = JoinPath(folder, package.SrvName);
  StartFileProgress(package.PackSize);
  SetSubAction(url);
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
  ReRaiseError(kModule, "DownloadSrvMiltiFiles");
}

void KsUpdater::StartFileProgress(std::int32_t bytes) try {
  file_start_ = progress_position_;
  file_end_ = file_start_;
  AddChecked(file_end_, bytes);
  file_received_ = 0;
  SetProgress(file_start_);
} catch (...) {
  ReRaiseError(kModule, "StartFileProgress");
}

void KsUpdater::OnChunkLoaded(bool /*is_skipped*/, std::int32_t byte_count) try {
  AddChecked(file_received_, byte_count);
  const std::int32_t announced = file_end_ - file_start_;
  if (file_received_ > MaxComponent(announced)) {
    too_much_received_ = true;
    RaiseProgramError(engine_texts::TooMuchReceived(transfer_url_));
  }
  progress_position_ = file_start_ + std::min(file_received_, announced);
  SetProgress(progress_position_);
} catch (...) {
  ReRaiseError(kModule, "fLoader_OnChunkLoaded");
}

void KsUpdater::OnCheckCancel(bool& is_cancelled) try {
  is_cancelled = !MayTransfer();
} catch (...) {
  ReRaiseError(kModule, "fLoader_OnCheckCancel");
}

void KsUpdater::FinishFileProgress() try {
  progress_position_ = file_end_;
  SetProgress(progress_position_);
} catch (...) {
  ReRaiseError(kModule, "FinishFileProgress");
}

}  // namespace tmw
