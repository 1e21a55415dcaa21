#pragma once

#include <string>

// The folders that a run works in, and the places of files in them. All paths are absolute, folders
// without a separator at the end.
namespace tmw {

// The updater's working place, "TMW_WebUpdate" (product/working_place.h).
bool CreateTempDir(const std::string& product_code, std::string& temp_dir);
bool IsWorkingCopy(const std::string& product_code);

struct ReleasePaths {
  std::string Folder;      // in the temporary folder, named by the release
  std::string Parts;       // packed downloads and what is being unpacked
  std::string Loaded;      // verified components under their installed names
  std::string Scripts;     // database update scripts
  std::string Structures;  // table structures
};

ReleasePaths MakeReleasePaths(const std::string& temp_dir, const std::string& version_id);

void CreateReleaseFolders(const ReleasePaths& release);

// The files that a component passes through on its way into the Loaded folder.
struct ComponentPlaces {
  std::string Part;      // the package as it is downloaded
  std::string Unpacked;  // its content, not verified yet
  std::string Loaded;
};

// name: the component's installed name.
ComponentPlaces MakeComponentPlaces(const ReleasePaths& release, const std::string& name);

}  // namespace tmw
