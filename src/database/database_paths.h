#pragma once

#include <cstdint>
#include <string>

// Where the databases of an update lie. Folders come without a separator at their end.
namespace tmw {

// "Tamrin_LastVer.mdb" in the release's structures folder.
std::string BuiltReferencePath(const std::string& structures_folder);
// ... and in the product's database folder.
std::string InstalledReferencePath();

// "Tamrin.mdb" in the release's scripts folder.
std::string BuiltWorkingPath(const std::string& scripts_folder);

// Where the user database's file lies: what its name leads to when that is a link. This is the
// place where the file is changed for the next one.
std::string UserDatabasePlace();

// The new user database beside the old one. Under this name there is only ever a complete copy.
std::string NewUserDatabasePath();

// "Tamrin_117.zip" beside the user database of that build.
std::string BackupPath(std::int32_t build_number);

// True for the files in which the user's rows lie: the user database, what stands beside it under
// its name, its backups. The folder is absolute; letter case does not count.
bool IsUserDatabaseFile(const std::string& folder, const std::string& name);

// The scripts that the product itself keeps.
std::string InstalledScriptsFolder();

}  // namespace tmw
