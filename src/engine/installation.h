#pragma once

#include <functional>
#include <vector>

#include "engine/records.h"
#include "engine/working_folders.h"
#include "services/updater_events.h"

namespace tmw {

// Replaces the program files of a release by the loaded ones. From the first removal until clean-up
// the installation is marked as under way. Nothing here can be cancelled.
class Installation {
 public:
  Installation(const Manifest& manifest, const ReleasePaths& release, UpdaterEvents& events)
      : manifest_(manifest), release_(release), events_(events) {}

  // Unregisters and deletes the files that need an update. Always returns true: what cannot be
  // deleted is raised.
  bool UninstallOldFiles();

  // Copies the new ones to their places and registers components, unchanged ones again. Returns
  // false at the first failure, which has been reported; a failure with an unchanged one is
  // ignored.
  bool InstallNewFiles();

  // Ends the installation: removes its mark and the folders of the release and of the run.
  void CleanupTempFolders(const std::string& temp_dir);

 private:
  bool HandleFiles(const char* action, bool (*is_concerned)(const WuFileNode& file),
                   const std::function<bool(const WuFileNode& file)>& step);

  const Manifest& manifest_;
  const ReleasePaths& release_;
  UpdaterEvents& events_;
};

}  // namespace tmw
