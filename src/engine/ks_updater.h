#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "engine/database_update.h"
#include "engine/installation.h"
#include "engine/records.h"
#include "engine/release_reader.h"
#include "engine/self_update.h"
#include "engine/working_folders.h"
#include "services/updater_events.h"

namespace tmw {

// One update run: Execute calls the stages one after another. A stage returns false to end the run,
// and has reported why, unless the user has cancelled. One object per run, one Execute per object.
class KsUpdater {
 public:
  // The listener outlives the run. exit_updater ends this process once the next updater runs.
  KsUpdater(UpdaterEvents& events, std::function<void()> exit_updater);

  // updated becomes true only if the last stage was reached. The fallback address may be empty.
  void Execute(const std::string& product_code, const std::string& url,
               const std::string& fallback_url, bool& updated);

  // The installed product's version; empty if it is not known.
  const std::string& OldProductVersion() const { return old_product_version_; }
  void SetOldProductVersion(const std::string& version) { old_product_version_ = version; }

  // The version of the update; empty until the digest has been read.
  const std::string& NewVersion() const { return digest_.Version; }

  // What a user can do about a run that has ended in the middle of the installation; empty for any
  // other run.
  std::string AdviceOnUnfinished() const;

 private:
  bool RunStages();

  // The stages in the order of the run, groups of them before their members.
  bool MoveToTempCopy();
  bool CopyToTempFolderAndRestart();
  bool Initialize();
  bool DownloadDigest();
  bool CheckProductVersion();
  bool CalculateLoadingUrl();
  bool ReplaceUpdater();
  bool DownloadUpdater();
  bool RestartUpdater();
  bool DownloadAndParseManifest();
  bool BuildUpdateList();
  bool HasWork();
  bool LookBeforeDownload();
  bool CreateDownloadingFolder();
  bool DownloadNecessaryFiles();
  bool BuildDatabases();
  bool BuildEtalonDB();
  bool BuildWorkingDB();
  bool LookBeforeRemoval();
  bool KeepPrevious();
  bool ReplaceOwnFiles();
  bool UninstallOldFiles();
  bool InstallNewFiles();
  bool PlaceDatabases();
  bool BackupUserDB();
  bool CopyNewUserDB();
  void CleanupTempFolders();

  void EnterStep(std::int32_t step);
  ReleaseReader Reader() const;
  // Clears the text of a stage and returns its result.
  bool Ended(bool goes_on);

  UpdaterEvents& events_;
  SelfUpdate self_update_;
  const bool is_client_;
  std::string product_code_;
  UpdateServers servers_;
  std::string old_product_version_;
  std::string temp_dir_;
  Digest digest_;
  std::string loading_url_;
  Manifest manifest_;
  UpdateNeed need_;
  ReleasePaths release_;
  std::optional<DatabaseUpdate> databases_;
  std::optional<Installation> installation_;
};

}  // namespace tmw
