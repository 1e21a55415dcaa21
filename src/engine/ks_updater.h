#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "database/database_build.h"
#include "database/table_lookup.h"
#include "engine/records.h"
#include "engine/release_paths.h"
#include "ports/database.h"
#include "ports/xml_document.h"
#include "services/message_boxes.h"
#include "services/updater_events.h"
#include "transfer/inet_file_downloader.h"

namespace tmw {

// One update run. Execute calls the stages one after another; a stage returns "go on" and has told
// the user when it returns false. One object per run, one Execute per object.
class KsUpdater final : private DownloaderEvents {
 public:
  // The listener outlives the run. exit_updater ends this process once the next updater runs.
  KsUpdater(UpdaterEvents& events, std::function<void()> exit_updater);

  // updated becomes true only when the last stage was reached.
  void Execute(const std::string& product_code, const std::string& url,
               const std::string& fallback_url, bool& updated);

  // The installed product's version; empty when unknown.
  const std::string& OldProductVersion() const { return old_product_version_; }
  void SetOldProductVersion(const std::string& version) { old_product_version_ = version; }

  // The version of the update; empty until the digest has been read.
  const std::string& NewVersion() const { return new_version_; }

 private:
  friend class KsUpdaterProbe;  // the measurements' way to a single stage

  using VersionNumbers = std::array<std::int32_t, 4>;

  // ks_updater.cpp: the run, its preparation, what stages tell.
  bool RunStages();
  bool MoveToTempCopy();
  bool ReplaceUpdater();
  bool HasWork();
  bool CanReplaceFiles();
  bool AskForDownload();
  bool BuildDatabases();
  bool PlaceDatabases();
  bool Initialize();
  bool CreateTempDir();
  std::string ParseConsts(const std::string& text) const;
  bool CancelPressed() { return events_.CancelPressed(); }
  void ClearProgress() { events_.ClearProgress(); }
  void SetMainAction(const std::string& text) { events_.OnSetMainAction(text); }
  void SetSubAction(const std::string& text) { events_.OnSetSubAction(text); }
  void SetupProgress(std::int32_t max, bool show_count) {
    events_.OnSetupProgress(max, show_count);
  }
  void SetProgress(std::int32_t value) { events_.OnSetProgress(value); }
  void SetButtonMode(std::int32_t mode) { events_.OnSetButtonMode(mode); }
  void SetIcon(const std::string& name) { events_.OnSetIcon(name); }

  // digest_stage.cpp
  bool DownloadDigest();
  bool LoadDigest();
  bool CheckForUpdaterVersion(const std::string& line);
  bool ParseUpdaterDigestPart(const std::vector<std::string>& lines);

  // product_version_stage.cpp
  std::string LoadOldProductVersion();
  bool CheckProductVersion();
  bool CompareProductVersions();

  // server_list_stage.cpp
  bool CalculateLoadingUrl();
  bool ChooseServer();

  // manifest_stage.cpp
  bool DownloadAndParseManifest();
  bool FetchManifest();
  bool ParseManifest(const std::string& file);
  bool ParseFileNode(const ports::XmlNode& node, const std::string& folder);
  bool ParseTableNode(const ports::XmlNode& node, bool is_user);
  bool ParseFiles(const ports::XmlNode& root);
  bool ParseTables(const ports::XmlNode& root);
  void RequireOneContentPerName() const;

  // update_list_stage.cpp
  bool BuildUpdateList();
  bool JudgeFiles();
  bool JudgeTables();
  bool CheckForFileUpdate(WuFileNode& node);
  bool CheckForTableUpdate(WuTableNode& node);

  // download_stage.cpp
  bool CreateDownloadingFolder();
  bool DownloadNecessaryFiles();
  bool DownloadFiles();
  bool DownloadTables();
  bool DownloadDatabasePackages();
  bool FetchSmallFile(const std::string& name, const std::string& local,
                      std::string (*failure)(const std::string& reason));
  bool Fetch(const std::string& url, const std::string& local, std::int64_t max_bytes);
  bool Attempt(const std::string& url, const std::function<bool()>& transfer);
  bool MayTransfer();
  bool Transfer(const std::string& url, const std::string& target);
  bool DownloadSrvFile(const std::string& name, const std::string& server_name,
                       std::int32_t pack_method, std::int32_t server_size,
                       std::int32_t expected_length, const std::string& expected_hash);
  bool DownloadSrvMiltiFiles(const std::string& folder, const WuPackage& package,
                             bool empty_folder_first);
  void StartFileProgress(std::int32_t bytes);
  void FinishFileProgress();
  void OnChunkLoaded(bool is_skipped, std::int32_t byte_count) override;
  void OnCheckCancel(bool& is_cancelled) override;

  // install_stage.cpp
  bool HandleFiles(const char* action, bool (*is_concerned)(const WuFileNode& file),
                   const std::function<bool(const WuFileNode& file)>& step);
  bool UninstallOldFiles();
  bool InstallNewFiles();
  void CleanupTempFolders();

  // self_update_stage.cpp
  bool CopyToTempFolderAndRestart();
  bool CopyModuleToTempFolder(const std::string& source, std::string& target);
  bool DownloadUpdater();
  bool DownloadUpdaterComponent(WuUpdaterComponent& component);
  bool RestartUpdater();
  bool StartNewUpdater();

  // database_stage.cpp
  DatabaseBuild MakeDatabaseBuild() const;
  bool BuildEtalonDB();
  bool BuildWorkingDB();
  bool BackupUserDB();
  bool CopyNewUserDB();

  UpdaterEvents& events_;
  std::function<void()> exit_updater_;

  std::string product_code_;
  std::string url_;           // ends in "/"
  std::string fallback_url_;  // likewise, or empty
  std::string old_product_version_;
  std::string new_version_;
  VersionNumbers new_version_numbers_{};
  bool updater_update_needed_ = false;
  std::vector<WuUpdaterComponent> updater_components_;

  std::string temp_dir_;
  std::string loading_url_;
  std::map<std::string, std::string> consts_;  // of folder names, by name
  std::string database_folder_;
  std::string database_name_;

  std::string version_id_;
  std::string version_id_name_;  // as an XML name; nothing in the run reads it
  std::vector<WuFileNode> files_;
  std::vector<WuTableNode> tables_;                   // dictionaries first
  std::map<std::string, std::size_t> table_by_name_;  // lower-cased name to position in tables_
  WuPackage scripts_package_;
  WuPackage structures_package_;

  std::string user_database_hash_;  // before its working copy was made

  bool tables_need_update_ = false;
  bool files_need_update_ = false;
  std::int32_t components_judged_ = 0;
  std::int32_t download_volume_ = 0;  // bytes, an estimate

  ReleasePaths release_;
  std::unique_ptr<InetFileDownloader> downloader_;
  std::string transfer_url_;  // of the component under way
  bool too_much_received_ = false;
  bool has_rested_ = false;  // the transfer, while the user was thinking
  std::int32_t progress_position_ = 0;
  std::int32_t file_start_ = 0;
  std::int32_t file_end_ = 0;
  std::int32_t file_received_ = 0;
};

// False also when the database cannot tell.
bool TableExists(const std::string& table, ports::Database& database);

}  // namespace tmw
