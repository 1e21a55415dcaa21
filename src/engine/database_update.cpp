#include "engine/database_update.h"

#include <algorithm>

#include "database/database_paths.h"
#include "database/etalon_db.h"
#include "database/working_db.h"
#include "engine/database_backup.h"
#include "engine/engine_texts.h"
#include "engine/user_database.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"

namespace tmw {
namespace {

void PlaceReferenceDatabase(const std::string& built) {
  const std::string installed = InstalledReferencePath();
  if (IsFileExists(installed)) CopyRights(installed, built);
  CopyFile(built, installed);
  DeleteFile(built);
}

// A product that has no folder for scripts gets none.
void PlaceScripts(const std::string& folder) {
  const std::string installed = InstalledScriptsFolder();
  if (!IsFolderExists(installed)) return;
  for (const std::string& name :
       CollectFileNamesInFolder(folder, std::string(names::kScriptMask))) {
    CopyFile(JoinPath(folder, name), JoinPath(installed, name));
  }
}

}  // namespace

DatabaseUpdate::DatabaseUpdate(UpdaterEvents& events, const std::string& product_code,
                               const Digest& digest, const Manifest& manifest,
                               const ReleasePaths& release)
    : events_(events) {
  build_.ProductCode = product_code;
  std::copy_n(digest.VersionNumbers.begin(), build_.TargetVersion.size(),
              build_.TargetVersion.begin());
  build_.LoadedFolder = release.Loaded;
  build_.ScriptsFolder = release.Scripts;
  build_.StructuresFolder = release.Structures;
  build_.Tables = &manifest.Tables;
}

bool DatabaseUpdate::BuildReference() {
  return BuildEtalonDB(build_, events_);
}

bool DatabaseUpdate::BuildWorking() {
  // Changes to the user database from here on may be missing in the copy.
  user_rows_hash_ = HashOfUserRows();
  return BuildWorkingDB(build_, events_);
}

bool DatabaseUpdate::BackUp() {
  events_.OnSetMainAction(engine_texts::kBackingUp);
  const bool result = PackUserDatabase();
  events_.OnSetMainAction("");
  events_.OnSetSubAction("");
  return result;
}

bool DatabaseUpdate::PlaceNew() {
  events_.OnSetMainAction(engine_texts::kPlacingDatabase);
  events_.OnSetSubAction(engine_texts::kPlacingReference);
  PlaceReferenceDatabase(BuiltReferencePath(build_.StructuresFolder));
  events_.OnSetSubAction(engine_texts::kPlacingWorking);
  const bool result = ReplaceUserDatabase(BuiltWorkingPath(build_.ScriptsFolder),
                                          build_.TargetVersion, user_rows_hash_);
  if (result) {
    events_.OnSetSubAction(engine_texts::kPlacingScripts);
    PlaceScripts(build_.ScriptsFolder);
  }
  events_.OnSetMainAction("");
  events_.OnSetSubAction("");
  return result;
}

}  // namespace tmw
