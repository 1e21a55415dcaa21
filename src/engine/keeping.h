#pragma once

#include <string>

#include "database/db_version.h"
#include "engine/records.h"
#include "engine/working_folders.h"
#include "services/updater_events.h"

// Keeps what an installation is going to replace, for the way back (product/kept_list.h): before
// the first change everything is kept and listed, so that nothing has to be kept later on. Files
// get a second name where the file system has such, else they are copied; none of them is written
// to in place afterwards.
namespace tmw {

// The run that is about to change the product.
struct KeepingRun {
  const Manifest& Content;
  const ReleasePaths& Release;
  std::string TempDir;
  std::string OldVersion;  // may be empty: not known
  std::string NewVersion;
  bool IsClient = false;
};

// A new list replaces the one of the update before. A run that finishes an interrupted installation
// adds to its list, where what was kept first stays; a repair of the installed release leaves the
// list as it is. If keeping fails the user is asked whether to go on without; there is no list
// then. Returns false if the run is not to go on; nothing has been changed.
bool KeepPrevious(const KeepingRun& run, UpdaterEvents& events);

// The books before an update, and what is going to replace them.
struct BooksBefore {
  std::string Archive;  // their backup
  DbVersion Version{};
  DbVersion TargetVersion{};
  std::string NewHash;  // of the database that has been built
};

// Adds the backup to the list of that release, if there is one. The backup of an interrupted run
// stays if the user database already is the new one.
void KeepBackup(const std::string& version_id, const BooksBefore& books);

}  // namespace tmw
