#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/records.h"
#include "services/updater_events.h"

namespace tmw {

// Starts another updater in the place of this one: a copy of itself outside the product's folder,
// where files are replaced, or the newer one that an update requires. An operation that returns
// false has reported why, unless the user has cancelled.
class SelfUpdate {
 public:
  // exit_updater ends this process; it is called once the next updater runs.
  SelfUpdate(UpdaterEvents& events, std::function<void()> exit_updater);

  // Copies the program and the companion library and starts the copy with the installed product's
  // version and the arguments of this process.
  bool CopyToTempFolderAndRestart(const std::string& product_code, const std::string& old_version);

  // Starts the updater of the product's folder with administrator rights and ends this process.
  // Returns if it cannot be found, if this process has such rights or nobody can be asked for them,
  // and if they were not given.
  void RestartWithRights(const Manifest& manifest);

  // Returns false in an updater that was started by a self-update: it is still too old.
  static bool MayReplaceUpdater();

  // Downloads and verifies the components; each LocalFileName is set.
  bool DownloadUpdater(const std::string& loading_url, const std::string& temp_dir,
                       std::vector<WuUpdaterComponent>& components);

  // Starts the first component, which is the program.
  bool RestartUpdater(const std::vector<WuUpdaterComponent>& components);

 private:
  bool CopyModuleToTempFolder(std::string& module, const std::string& temp_dir);
  bool DownloadComponent(const std::string& url, const std::string& temp_dir,
                         WuUpdaterComponent& component);
  bool StartNewUpdater(const std::vector<WuUpdaterComponent>& components);

  UpdaterEvents& events_;
  std::function<void()> exit_updater_;
};

}  // namespace tmw
