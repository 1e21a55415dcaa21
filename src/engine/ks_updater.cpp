#include "engine/ks_updater.h"

#include <utility>

#include "engine/component_loader.h"
#include "engine/engine_texts.h"
#include "engine/keeping.h"
#include "engine/product_version_check.h"
#include "engine/run_messages.h"
#include "engine/run_record.h"
#include "engine/space_look.h"
#include "engine/target_look.h"
#include "engine/update_list.h"
#include "engine/user_database.h"
#include "engine/virtual_copies.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "ports/ports.h"
#include "ports/power.h"
#include "product/interruption_mark.h"
#include "services/box_titles.h"
#include "services/run_module.h"
#include "services/updater_settings.h"

namespace tmw {
namespace {

std::string WithSlashAtEnd(const std::string& url) {
  return url.ends_with("/") ? url : url + "/";
}

}  // namespace

KsUpdater::KsUpdater(UpdaterEvents& events, std::function<void()> exit_updater)
    : events_(events),
      self_update_(events, std::move(exit_updater)),
      is_client_(GetUpdaterSettings().IsClientInstallation) {}

void KsUpdater::Execute(const std::string& product_code, const std::string& url,
                        const std::string& fallback_url, bool& updated) try {
  product_code_ = product_code;
  servers_ = {WithSlashAtEnd(url), fallback_url.empty() ? "" : WithSlashAtEnd(fallback_url)};
  updated = false;
  updated = RunStages();
  events_.OnSetButtonMode(2);
} catch (...) {
  ReRaiseError(kRunModule, "Execute");
}

std::string KsUpdater::AdviceOnUnfinished() const {
  if (!installation_ || !installation_->IsUnderWay()) return {};
  return engine_texts::InstallationUnfinished(installation_->UpdaterToStart());
}

bool KsUpdater::RunStages() {
  if (!MoveToTempCopy()) return false;
  if (!Initialize()) return false;
  EnterStep(1);
  events_.OnSetIcon("");
  events_.OnSetButtonMode(1);
  events_.OnSetIcon("download");
  if (!DownloadDigest()) return false;
  if (!CheckProductVersion()) return false;
  if (!CalculateLoadingUrl()) return false;
  if (!ReplaceUpdater()) return false;
  if (events_.CancelPressed()) return false;
  if (!DownloadAndParseManifest()) return false;
  if (events_.CancelPressed()) return false;
  EnterStep(2);
  events_.OnSetIcon("scan");
  if (!BuildUpdateList()) return false;
  if (events_.CancelPressed()) return false;
  if (!HasWork()) return false;
  if (!LookBeforeDownload()) return false;
  if (!AskForDownload(need_.DownloadVolume)) return false;
  EnterStep(3);
  events_.OnSetIcon("download");
  if (!CreateDownloadingFolder()) return false;
  if (events_.CancelPressed()) return false;
  if (!DownloadNecessaryFiles()) return false;
  if (events_.CancelPressed()) return false;
  if (!BuildDatabases()) return false;
  if (!LookBeforeRemoval()) return false;
  if (!KeepPrevious()) return false;
  EnterStep(is_client_ ? 4 : 5);
  events_.OnSetIcon("trash");
  events_.OnSetButtonMode(0);
  const auto awake = ports::CurrentPorts().power->KeepAwake(box_titles::kUpdaterProgram,
                                                            engine_texts::kBusyInstalling);
  if (!ReplaceOwnFiles()) return false;
  if (!UninstallOldFiles()) return false;
  events_.OnSetIcon("install");
  if (!InstallNewFiles()) return false;
  if (!PlaceDatabases()) return false;
  events_.OnSetIcon("brush");
  CleanupTempFolders();
  return true;
}

bool KsUpdater::MoveToTempCopy() {
  if (IsWorkingCopy(product_code_)) return true;
  if (old_product_version_.empty()) old_product_version_ = LoadOldProductVersion();
  return CopyToTempFolderAndRestart();
}

bool KsUpdater::ReplaceUpdater() {
  if (digest_.Updater != UpdaterVersionCheck::kUpdateNeeded) return true;
  return SelfUpdate::MayReplaceUpdater() && DownloadUpdater() && RestartUpdater();
}

bool KsUpdater::HasWork() {
  // An interrupted installation is completed even if every file already is the new one.
  if (IsInstallationInterrupted(temp_dir_) || tmw::HasWork(need_, is_client_)) return true;
  // A run may have been killed while it cleaned up.
  DeleteFolderTree(temp_dir_);
  return false;
}

bool KsUpdater::LookBeforeDownload() try {
  const ReleasePaths release = MakeReleasePaths(temp_dir_, manifest_.VersionID);
  return IsWayClear(PlanLook(manifest_, is_client_),
                    [this] { self_update_.RestartWithRights(manifest_); }) &&
         HasRoom(PlanSpace(manifest_, is_client_, release, SpaceMoment::kBeforeDownload));
} catch (...) {
  ReRaiseError(kRunModule, "LookBeforeDownload");
}

bool KsUpdater::LookBeforeRemoval() try {
  return IsWayClear(PlanLook(manifest_, is_client_)) &&
         HasRoom(PlanSpace(manifest_, is_client_, release_, SpaceMoment::kBeforeRemoval));
} catch (...) {
  ReRaiseError(kRunModule, "LookBeforeRemoval");
}

bool KsUpdater::BuildDatabases() {
  if (is_client_) return true;
  databases_.emplace(events_, product_code_, digest_, manifest_, release_);
  EnterStep(4);
  events_.OnSetIcon("dbnew");
  if (!BuildEtalonDB() || events_.CancelPressed()) return false;
  events_.OnSetIcon("dbgear");
  return BuildWorkingDB() && !events_.CancelPressed();
}

bool KsUpdater::PlaceDatabases() {
  if (is_client_) return true;
  EnterStep(6);
  events_.OnSetIcon("dbgear");
  return BackupUserDB() && CopyNewUserDB();
}

bool KsUpdater::CopyToTempFolderAndRestart() try {
  return self_update_.CopyToTempFolderAndRestart(product_code_, old_product_version_);
} catch (...) {
  ReRaiseError(kRunModule, "CopyToTempFolderAndRestart");
}

bool KsUpdater::Initialize() try {
  if (!CreateTempDir(product_code_, temp_dir_)) return false;
  if (!HasNoVirtualCopies(is_client_)) return false;
  CheckUserDatabase(is_client_);
  events_.ClearProgress();
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "Initialize");
}

// Downloading, installing and what precedes them; for the databases two more.
void KsUpdater::EnterStep(std::int32_t step) {
  events_.OnSetStep(step, is_client_ ? 4 : 6);
}

ReleaseReader KsUpdater::Reader() const {
  return {events_, product_code_, servers_, temp_dir_};
}

bool KsUpdater::Ended(bool goes_on) {
  events_.OnSetMainAction("");
  return goes_on;
}

bool KsUpdater::DownloadDigest() try { return Ended(Reader().ReadDigest(digest_)); } catch (...) {
  ReRaiseError(kRunModule, "DownloadDigest");
}

bool KsUpdater::CheckProductVersion() try {
  RecordVersions(digest_, old_product_version_);
  return tmw::CheckProductVersion(old_product_version_, digest_.Version, temp_dir_, events_);
} catch (...) {
  ReRaiseError(kRunModule, "CheckProductVersion");
}

bool KsUpdater::CalculateLoadingUrl() try {
  return Ended(Reader().ChooseServer(digest_.Version, loading_url_));
} catch (...) {
  ReRaiseError(kRunModule, "CalculateLoadingUrl");
}

bool KsUpdater::DownloadUpdater() try {
  return self_update_.DownloadUpdater(loading_url_, temp_dir_, digest_.UpdaterComponents);
} catch (...) {
  ReRaiseError(kRunModule, "DownloadUpdater");
}

bool KsUpdater::RestartUpdater() try {
  return self_update_.RestartUpdater(digest_.UpdaterComponents);
} catch (...) {
  ReRaiseError(kRunModule, "RestartUpdater");
}

bool KsUpdater::DownloadAndParseManifest() try {
  const bool goes_on = Ended(Reader().ReadManifest(loading_url_, digest_, manifest_));
  if (goes_on) RecordManifest(loading_url_, manifest_);
  return goes_on;
} catch (...) {
  ReRaiseError(kRunModule, "DownloadAndParseManifest");
}

bool KsUpdater::BuildUpdateList() try {
  const bool goes_on = tmw::BuildUpdateList(manifest_, is_client_, events_, need_);
  if (goes_on) RecordNeed(manifest_, need_);
  return goes_on;
} catch (...) {
  ReRaiseError(kRunModule, "BuildUpdateList");
}

bool KsUpdater::CreateDownloadingFolder() try {
  release_ = MakeReleasePaths(temp_dir_, manifest_.VersionID);
  CreateReleaseFolders(release_);
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "CreateDownloadingFolder");
}

bool KsUpdater::DownloadNecessaryFiles() try {
  return ComponentLoader(events_, release_, loading_url_)
      .DownloadNecessaryFiles(manifest_, need_.DownloadVolume, is_client_);
} catch (...) {
  ReRaiseError(kRunModule, "DownloadNecessaryFiles");
}

bool KsUpdater::BuildEtalonDB() try { return databases_->BuildReference(); } catch (...) {
  ReRaiseError(kRunModule, "BuildEtalonDB");
}

bool KsUpdater::BuildWorkingDB() try { return databases_->BuildWorking(); } catch (...) {
  ReRaiseError(kRunModule, "BuildWorkingDB");
}

bool KsUpdater::KeepPrevious() try {
  return tmw::KeepPrevious(
      {manifest_, release_, temp_dir_, old_product_version_, digest_.Version, is_client_}, events_);
} catch (...) {
  ReRaiseError(kRunModule, "KeepPrevious");
}

bool KsUpdater::ReplaceOwnFiles() try {
  installation_.emplace(manifest_, release_, temp_dir_, events_);
  return installation_->ReplaceOwnFiles();
} catch (...) {
  ReRaiseError(kRunModule, "ReplaceOwnFiles");
}

bool KsUpdater::UninstallOldFiles() try { return installation_->UninstallOldFiles(); } catch (...) {
  ReRaiseError(kRunModule, "UninstallOldFiles");
}

bool KsUpdater::InstallNewFiles() try { return installation_->InstallNewFiles(); } catch (...) {
  ReRaiseError(kRunModule, "InstallNewFiles");
}

bool KsUpdater::BackupUserDB() try { return databases_->BackUp(); } catch (...) {
  ReRaiseError(kRunModule, "BackupUserDB");
}

bool KsUpdater::CopyNewUserDB() try { return databases_->PlaceNew(); } catch (...) {
  ReRaiseError(kRunModule, "CopyNewUserDB");
}

void KsUpdater::CleanupTempFolders() try { installation_->CleanupTempFolders(); } catch (...) {
  ReRaiseError(kRunModule, "CleanupTempFolders");
}

}  // namespace tmw
