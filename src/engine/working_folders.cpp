#include "engine/working_folders.h"

#include "engine/engine_texts.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "services/message_boxes.h"
#include "services/run_module.h"

namespace tmw {

bool CreateTempDir(const std::string& product_code, std::string& temp_dir) try {
  temp_dir = JoinPath(GetTemporaryFolder(), product_code + std::string(names::kTempFolderEnding));
  std::string reason;
  if (TryCreateFolderIfAbsent(temp_dir, reason) && IsFolderExists(temp_dir)) return true;
  DownloadError(engine_texts::NoTempFolder(temp_dir), FailureKind::kNoRights);
  return false;
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
