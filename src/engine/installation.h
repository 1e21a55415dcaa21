#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/records.h"
#include "engine/working_folders.h"
#include "services/updater_events.h"

namespace tmw {

// Replaces the program files of a release by the loaded ones. From before the first change until
// clean-up the installation is marked as under way. Nothing here can be cancelled. One object per
// run, made before anything is changed.
class Installation {
 public:
  // The manifest outlives the object.
  Installation(const Manifest& manifest, ReleasePaths release, std::string temp_dir,
               UpdaterEvents& events);

  // Marks the installation, then replaces the updater's own files, each in one step: whatever
  // happens afterwards, the product's folder holds a whole updater that can finish the work.
  // Returns false after reporting the first failure, as does InstallNewFiles.
  bool ReplaceOwnFiles();

  // Unregisters and deletes the other files that need an update. Always returns true: what cannot
  // be deleted is raised.
  bool UninstallOldFiles();

  // Copies the new ones to their places and registers components, unchanged ones again. A failure
  // with an unchanged one does not end it; such failures are shown together in the end if an
  // earlier run was interrupted, since its failures to register were shown once and for all then.
  bool InstallNewFiles();

  // Ends the installation: removes its marks and everything in the temporary folder of the run,
  // what other releases have left there included.
  void CleanupTempFolders();

  // True from the first change until clean-up.
  bool IsUnderWay() const { return is_under_way_; }

  // The updater's program that a user can start to finish the work: the installed one, else this
  // copy.
  std::string UpdaterToStart() const;

 private:
  bool HandleFiles(const char* action,
                   const std::function<bool(const WuFileNode& file)>& is_concerned,
                   const std::function<bool(const WuFileNode& file)>& step);
  void UninstallFile(const WuFileNode& file);
  bool InstallFile(const WuFileNode& file);
  // Every installed file that goes, goes here. What may stay is tried once, without a report.
  enum class Need { kMust, kMay };
  static void RemoveInstalled(const std::string& path, Need need);

  const Manifest& manifest_;
  ReleasePaths release_;
  std::string temp_dir_;
  UpdaterEvents& events_;
  const bool was_interrupted_;
  bool is_under_way_ = false;
};

}  // namespace tmw
