#pragma once

#include <cstdint>
#include <string>

// Where the databases of an update lie. Folders have no separator at the end.
namespace tmw {

// "Tamrin_LastVer.mdb" in the release's structures folder,
std::string BuiltReferencePath(const std::string& structures_folder);
// and in the product's database folder.
std::string InstalledReferencePath();

// "Tamrin.mdb" in the release's scripts folder.
std::string BuiltWorkingPath(const std::string& scripts_folder);

// Where the file of the user database lies: if its name is a link, what that leads to. The file is
// replaced there.
std::string UserDatabasePlace();

// The new user database beside the old one. A file of this name is always a complete copy.
std::string NewUserDatabasePath();

// "Tamrin_117.zip" beside the user database of that build; further numbers give "Tamrin_117
// (2).zip" and so on.
std::string BackupPath(std::int32_t build_number, int number = 1);

// Returns true for the files that hold the user's rows: the user database, files beside it whose
// names begin with its name, and its backups. The folder is absolute; letter case does not count.
bool IsUserDatabaseFile(const std::string& folder, const std::string& name);

// The scripts that the product itself keeps.
std::string InstalledScriptsFolder();

}  // namespace tmw
