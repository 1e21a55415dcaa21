#include "engine/ks_updater.h"

#include "database/access_helpers.h"
#include "engine/engine_texts.h"
#include "engine/folder_constants.h"
#include "engine/interruption_mark.h"
#include "engine/updater_utils.h"
#include "engine/user_database.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "ports/database.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "services/product_settings.h"
#include "services/updater_settings.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";

std::string WithSlashAtEnd(const std::string& url) {
  return url.ends_with("/") ? url : url + "/";
}

}  // namespace

KsUpdater::KsUpdater(UpdaterEvents& events, std::function<void()> exit_updater)
    : events_(events), exit_updater_(std::move(exit_updater)) {}

void KsUpdater::Execute(const std::string& product_code, const std::string& url,
                        const std::string& fallback_url, bool& updated) try {
  updated = false;
  product_code_ = product_code;
  url_ = url;
  fallback_url_ = fallback_url;
  updated = RunStages();
  SetButtonMode(2);
} catch (...) {
  ReRaiseError(kModule, "Execute");
}

bool KsUpdater::RunStages() {
  if (!GetUpdaterSettings().IsTempCopy && !MoveToTempCopy()) return false;
  if (!Initialize()) return false;
  SetIcon("");
  SetButtonMode(1);
  SetIcon("download");
  if (!DownloadDigest()) return false;
  if (!old_product_version_.empty() && !CheckProductVersion()) return false;
  if (!CalculateLoadingUrl()) return false;
  if (updater_update_needed_ && !ReplaceUpdater()) return false;
  if (CancelPressed()) return false;
  if (!DownloadAndParseManifest()) return false;
  if (CancelPressed()) return false;
  SetIcon("scan");
  if (!BuildUpdateList()) return false;
  if (CancelPressed()) return false;
  if (!HasWork() || !CanReplaceFiles()) return false;
  if (!AskForDownload()) return false;
  SetIcon("download");
  if (!CreateDownloadingFolder() || CancelPressed()) return false;
  if (!DownloadNecessaryFiles() || CancelPressed()) return false;
  if (!GetUpdaterSettings().IsClientInstallation && !BuildDatabases()) return false;
  SetIcon("trash");
  SetButtonMode(0);
  if (!UninstallOldFiles()) return false;
  SetIcon("install");
  if (!InstallNewFiles()) return false;
  if (!GetUpdaterSettings().IsClientInstallation && !PlaceDatabases()) return false;
  SetIcon("brush");
  CleanupTempFolders();
  return true;
}

bool KsUpdater::MoveToTempCopy() {
  if (old_product_version_.empty()) old_product_version_ = LoadOldProductVersion();
  return CopyToTempFolderAndRestart();
}

bool KsUpdater::ReplaceUpdater() {
  if (GetUpdaterSettings().IsRestartedAfterSelfUpdate) {
    DownloadError(engine_texts::kStillTooOld);
    return false;
  }
  return DownloadUpdater() && RestartUpdater();
}

bool KsUpdater::HasWork() {
  // A half-done installation is finished even when every file already is the new one.
  if (IsInstallationInterrupted(temp_dir_)) return true;
  if (GetUpdaterSettings().IsClientInstallation && tables_need_update_ && !files_need_update_) {
    ShowInformation(engine_texts::kUpdaterTitle, engine_texts::kServerComputerOnly);
    return false;
  }
  if (!tables_need_update_ && !files_need_update_) {
    ShowInformation(engine_texts::kUpdaterTitle, engine_texts::kNothingToDo);
    return false;
  }
  return true;
}

bool KsUpdater::AskForDownload() {
  return AskYesNo(engine_texts::VolumeQuestion(GetFriendlySizeString(download_volume_, false)),
                  engine_texts::kUpdateTitle);
}

bool KsUpdater::BuildDatabases() {
  SetIcon("dbnew");
  if (!BuildEtalonDB() || CancelPressed()) return false;
  SetIcon("dbgear");
  return BuildWorkingDB() && !CancelPressed();
}

bool KsUpdater::PlaceDatabases() {
  SetIcon("dbgear");
  return BackupUserDB() && CopyNewUserDB();
}

bool KsUpdater::Initialize() try {
  url_ = WithSlashAtEnd(url_);
  if (!fallback_url_.empty()) fallback_url_ = WithSlashAtEnd(fallback_url_);
  if (!CreateTempDir()) return false;
  consts_ = {{"p", GetProductRootPath()}};
  version_id_.clear();
  table_by_name_.clear();
  files_.clear();
  tables_.clear();
  updater_components_.clear();
  // Nobody else may hold the database: opening it alone proves that.
  const std::string database = database_utils::GetUserDBFileName();
  const bool is_client = GetUpdaterSettings().IsClientInstallation;
  if (!is_client) MendUserDatabase();
  ports::CurrentPorts().database->OpenDatabase(database, true, false)->Close();
  if (!is_client) ForgetUnusedCopy();
  const SplitName parts = SplitFileName(database);
  database_folder_ = parts.Folder;
  database_name_ = parts.FileName();
  ClearProgress();
  return true;
} catch (...) {
  ReRaiseError(kModule, "Initialize");
}

bool KsUpdater::CreateTempDir() try {
  temp_dir_ = MakeTempDirPath(product_code_);
  std::string reason;
  if (TryCreateFolderIfAbsent(temp_dir_, reason) && IsFolderExists(temp_dir_)) return true;
  DownloadError(engine_texts::NoTempFolder(temp_dir_));
  return false;
} catch (...) {
  ReRaiseError(kModule, "CreateTempDir");
}

std::string KsUpdater::ParseConsts(const std::string& text) const try {
  return ExpandFolderConstants(text, consts_);
} catch (...) {
  ReRaiseError(kModule, "ParseConsts");
}

}  // namespace tmw
