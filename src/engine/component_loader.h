#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "engine/component_check.h"
#include "engine/records.h"
#include "engine/working_folders.h"
#include "services/updater_events.h"
#include "transfer/inet_file_downloader.h"

namespace tmw {

// Brings the components of a release that are out of date into its working folders: each is loaded,
// unpacked and verified. What an earlier run of the same release has verified is not loaded again.
class ComponentLoader final : private DownloaderEvents {
 public:
  ComponentLoader(UpdaterEvents& events, ReleasePaths release, std::string loading_url);

  // volume: the end of the progress bar. A client installation gets no tables and no database
  // packages. Returns false if a component cannot be loaded, which has been reported, or if the
  // user has cancelled.
  bool DownloadNecessaryFiles(const Manifest& manifest, std::int32_t volume, bool is_client);

 private:
  bool DownloadFiles(const std::vector<WuFileNode>& files);
  bool DownloadTables(const std::vector<WuTableNode>& tables);
  bool DownloadDatabasePackages(const Manifest& manifest);
  bool DownloadSrvFile(const ComponentFacts& expected, const std::string& server_name);
  bool DownloadSrvMiltiFiles(const std::string& folder, const WuPackage& package,
                             bool empty_folder_first);

  // Loads until the check accepts the file. One that was put together from several transfers and
  // fails is loaded once more in one piece. Any other fault has been reported.
  using Check = std::function<bool(std::string& fault)>;
  bool Fetch(const std::string& url, const std::string& target, const Check& check);
  bool Transfer(const std::string& url, const std::string& target, bool may_continue);

  // Progress in bytes over all components. Each moves the bar by its announced size, however many
  // bytes arrive.
  void StartFileProgress(std::int32_t bytes);
  void FinishFileProgress();
  void OnChunkLoaded(bool is_skipped, std::int32_t byte_count) override;
  void OnCheckCancel(bool& is_cancelled) override;

  UpdaterEvents& events_;
  ReleasePaths release_;
  std::string loading_url_;
  InetFileDownloader downloader_;

  std::int32_t position_ = 0;
  std::string url_;  // of the component under way, as are the following
  std::int32_t start_ = 0;
  std::int32_t end_ = 0;
  std::int32_t received_ = 0;
  bool is_too_much_ = false;
  bool has_resumed_ = false;
};

}  // namespace tmw
