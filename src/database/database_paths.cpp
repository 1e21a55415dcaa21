#include "database/database_paths.h"

#include "database/access_helpers.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "startup/services/product_settings.h"

namespace tmw {
namespace {

SplitName UserDatabase() {
  return SplitFileName(database_utils::GetUserDBFileName());
}

std::string ReferenceName() {
  return UserDatabase().Name + std::string(names::kReferenceDatabaseEnding);
}

}  // namespace

std::string BuiltReferencePath(const std::string& structures_folder) {
  return JoinPath(structures_folder, ReferenceName());
}

std::string InstalledReferencePath() {
  return GetDataBasePath() + ReferenceName();
}

std::string BuiltWorkingPath(const std::string& scripts_folder) {
  return JoinPath(scripts_folder, UserDatabase().FileName());
}

std::string UserDatabasePlace() {
  return FollowLinks(database_utils::GetUserDBFileName());
}

std::string NewUserDatabasePath() {
  return UserDatabasePlace() + std::string(names::kNewDatabaseEnding);
}

std::string BackupPath(std::int32_t build_number) {
  const SplitName database = UserDatabase();
  return JoinPath(database.Folder, database.Name + "_" + std::to_string(build_number) +
                                       std::string(names::kBackupEnding));
}

std::string InstalledScriptsFolder() {
  return JoinPath(UserDatabase().Folder, names::kScriptsFolder);
}

}  // namespace tmw
