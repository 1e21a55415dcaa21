#pragma once

#include <string>

// The working folders of a release and the files in them. All paths are absolute, folders without a
// separator at the end.
namespace tmw {

struct ReleasePaths {
  std::string Folder;      // named by the release
  std::string Parts;       // packed downloads and what is being unpacked
  std::string Loaded;      // verified components under their installed names
  std::string Scripts;     // database update scripts
  std::string Structures;  // table structures
};

ReleasePaths MakeReleasePaths(const std::string& temp_dir, const std::string& version_id);

// "TMW_WebUpdate" in the user's temporary folder.
std::string MakeTempDirPath(const std::string& product_code);

// Where a component is downloaded to: its installed name and the package ending.
std::string PartPath(const ReleasePaths& release, const std::string& name);
std::string UnpackedPath(const ReleasePaths& release, const std::string& name);
std::string LoadedPath(const ReleasePaths& release, const std::string& name);

// It lies there from the moment the first old file is removed until clean-up, and names the
// release. While it is there the installation is half done, and the next run of that release
// finishes it.
std::string InterruptionMarkPath(const ReleasePaths& release);

}  // namespace tmw
