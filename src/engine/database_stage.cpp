#include <algorithm>

#include "database/database_paths.h"
#include "database/etalon_db.h"
#include "database/working_db.h"
#include "engine/engine_texts.h"
#include "engine/ks_updater.h"
#include "engine/user_database.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";

void PlaceReferenceDatabase(const std::string& built) {
  const std::string installed = InstalledReferencePath();
  if (IsFileExists(installed)) {
    CopyRights(installed, built);
    DeleteFileRepeatedly(installed);
  }
  CopyFile(built, installed);
  DeleteFile(built);
}

// A product that keeps no scripts gets none.
void PlaceScripts(const std::string& folder) {
  const std::string installed = InstalledScriptsFolder();
  if (!IsFolderExists(installed)) return;
  for (const std::string& name :
       CollectFileNamesInFolder(folder, std::string(names::kScriptMask))) {
    DeleteFile(JoinPath(installed, name));
    CopyFile(JoinPath(folder, name), JoinPath(installed, name));
  }
}

}  // namespace

DatabaseBuild KsUpdater::MakeDatabaseBuild() const {
  DatabaseBuild build;
  build.ProductCode = product_code_;
  std::copy_n(new_version_numbers_.begin(), build.TargetVersion.size(),
              build.TargetVersion.begin());
  build.LoadedFolder = release_.Loaded;
  build.ScriptsFolder = release_.Scripts;
  build.StructuresFolder = release_.Structures;
  build.Tables = &tables_;
  return build;
}

bool KsUpdater::BuildEtalonDB() try {
  return tmw::BuildEtalonDB(MakeDatabaseBuild(), events_);
} catch (...) {
  ReRaiseError(kModule, "BuildEtalonDB");
}

bool KsUpdater::BuildWorkingDB() try {
  // What is written to the user database from now on may not be in the working one.
  user_database_hash_ = HashOfUserRows();
  return tmw::BuildWorkingDB(MakeDatabaseBuild(), events_);
} catch (...) {
  ReRaiseError(kModule, "BuildWorkingDB");
}

bool KsUpdater::BackupUserDB() try {
  SetMainAction(engine_texts::kBackingUp);
  const bool result = PackUserDatabase();
  SetMainAction("");
  SetSubAction("");
  return result;
} catch (...) {
  ReRaiseError(kModule, "BackupUserDB");
}

bool KsUpdater::CopyNewUserDB() try {
  SetMainAction(engine_texts::kPlacingDatabase);
  SetSubAction(engine_texts::kPlacingReference);
  PlaceReferenceDatabase(BuiltReferencePath(release_.Structures));
  SetSubAction(engine_texts::kPlacingWorking);
  const DatabaseBuild build = MakeDatabaseBuild();
  const bool result = ReplaceUserDatabase(BuiltWorkingPath(release_.Scripts), build.TargetVersion,
                                          user_database_hash_);
  if (result) {
    SetSubAction(engine_texts::kPlacingScripts);
    PlaceScripts(release_.Scripts);
  }
  SetMainAction("");
  SetSubAction("");
  return result;
} catch (...) {
  ReRaiseError(kModule, "CopyNewUserDB");
}

}  // namespace tmw
