#include "engine/working_folders.h"

#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "product/working_place.h"
#include "services/run_module.h"

namespace tmw {
namespace {

std::string TempDirName(const std::string& product_code) {
  return product_code + std::string(names::kTempFolderEnding);
}

}  // namespace

bool IsWorkingCopy(const std::string& product_code) {
  return RunsInWorkingPlace(TempDirName(product_code));
}

bool CreateTempDir(const std::string& product_code, std::string& temp_dir) try {
  return CreateWorkingPlace(TempDirName(product_code), temp_dir);
} catch (...) {
  ReRaiseError(kRunModule, "CreateTempDir");
}

ReleasePaths MakeReleasePaths(const std::string& temp_dir, const std::string& version_id) {
  ReleasePaths paths;
  paths.Folder = JoinPath(temp_dir, version_id);
  paths.Parts = JoinPath(paths.Folder, names::kPartsFolder);
  paths.Loaded = JoinPath(paths.Folder, names::kLoadedFolder);
  paths.Scripts = JoinPath(paths.Folder, names::kScriptsFolder);
  paths.Structures = JoinPath(paths.Folder, names::kStructuresFolder);
  return paths;
}

void CreateReleaseFolders(const ReleasePaths& release) {
  for (const std::string& folder :
       {release.Folder, release.Parts, release.Loaded, release.Scripts, release.Structures}) {
    CreateFolderIfAbsent(folder);
  }
}

ComponentPlaces MakeComponentPlaces(const ReleasePaths& release, const std::string& name) {
  return {JoinPath(release.Parts, name + std::string(names::kPackageEnding)),
          JoinPath(release.Parts, name), JoinPath(release.Loaded, name)};
}

}  // namespace tmw
