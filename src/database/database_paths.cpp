#include "database/database_paths.h"

#include "database/access_helpers.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "foundation/protected_names.h"
#include "services/product_settings.h"

namespace tmw {
namespace {

SplitName UserDatabase() {
  return SplitFileName(database_utils::GetUserDBFileName());
}

// A folder, without a separator at the end, in the form in which folders are compared.
std::string Key(const std::string& folder) {
  return LowerCase(FollowLinks(GetAbsoluteFileName(folder)));
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

bool IsUserDatabaseFile(const std::string& folder, const std::string& name) {
  if (!IsUserDatabaseName(name)) return false;
  const std::string place = Key(folder);
  return place == Key(UserDatabase().Folder) ||
         place == Key(SplitFileName(UserDatabasePlace()).Folder);
}

std::string BackupPath(std::int32_t build_number, int number) {
  const SplitName database = UserDatabase();
  const std::string suffix = number == 1 ? "" : " (" + std::to_string(number) + ")";
  return JoinPath(database.Folder, database.Name + "_" + std::to_string(build_number) + suffix +
                                       std::string(names::kBackupEnding));
}

std::string InstalledScriptsFolder() {
  return JoinPath(UserDatabase().Folder, names::kScriptsFolder);
}

}  // namespace tmw
