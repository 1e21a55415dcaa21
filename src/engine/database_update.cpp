#include "engine/database_update.h"

#include <algorithm>
#include <optional>

#include "database/database_paths.h"
#include "database/etalon_db.h"
#include "database/working_db.h"
#include "engine/database_backup.h"
#include "engine/engine_texts.h"
#include "engine/keeping.h"
#include "engine/user_database.h"
#include "engine/verified_copy.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "packages/hash_api.h"

namespace tmw {
namespace {

bool PlaceReferenceDatabase(const std::string& built, const std::string& hash) {
  const std::string installed = InstalledReferencePath();
  if (IsFileExists(installed)) CopyRights(installed, built);
  if (!CopyBuiltDatabase(built, installed, hash)) return false;
  DeleteFile(built);
  return true;
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
    : events_(events), version_id_(manifest.VersionID) {
  build_.ProductCode = product_code;
  std::copy_n(digest.VersionNumbers.begin(), build_.TargetVersion.size(),
              build_.TargetVersion.begin());
  build_.LoadedFolder = release.Loaded;
  build_.ScriptsFolder = release.Scripts;
  build_.StructuresFolder = release.Structures;
  build_.Tables = &manifest.Tables;
}

bool DatabaseUpdate::BuildReference() {
  if (!BuildEtalonDB(build_, events_)) return false;
  reference_hash_ = GetFileHash(BuiltReferencePath(build_.StructuresFolder));
  return true;
}

bool DatabaseUpdate::BuildWorking() {
  // Changes to the user database from here on may be missing in the copy.
  user_rows_hash_ = HashOfUserRows();
  if (!BuildWorkingDB(build_, events_)) return false;
  working_hash_ = GetFileHash(BuiltWorkingPath(build_.ScriptsFolder));
  return true;
}

bool DatabaseUpdate::BackUp() {
  events_.OnSetMainAction(engine_texts::kBackingUp);
  const std::optional<Backup> backup = PackUserDatabase();
  if (backup) {
    KeepBackup(version_id_,
               {backup->Archive, backup->Version, build_.TargetVersion, working_hash_});
  }
  events_.OnSetMainAction("");
  events_.OnSetSubAction("");
  return backup.has_value();
}

bool DatabaseUpdate::PlaceNew() {
  events_.OnSetMainAction(engine_texts::kPlacingDatabase);
  events_.OnSetSubAction(engine_texts::kPlacingReference);
  bool result =
      PlaceReferenceDatabase(BuiltReferencePath(build_.StructuresFolder), reference_hash_);
  if (result) {
    events_.OnSetSubAction(engine_texts::kPlacingWorking);
    result = ReplaceUserDatabase({BuiltWorkingPath(build_.ScriptsFolder), working_hash_,
                                  build_.TargetVersion, user_rows_hash_});
  }
  if (result) {
    events_.OnSetSubAction(engine_texts::kPlacingScripts);
    PlaceScripts(build_.ScriptsFolder);
  }
  events_.OnSetMainAction("");
  events_.OnSetSubAction("");
  return result;
}

}  // namespace tmw
