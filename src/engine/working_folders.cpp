#include "engine/working_folders.h"

#include "engine/engine_texts.h"
#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "services/message_boxes.h"
#include "services/run_module.h"
#include "services/updater_settings.h"

namespace tmw {

namespace {

std::string TempDirName(const std::string& product_code) {
  return product_code + std::string(names::kTempFolderEnding);
}

std::string ProtectedTempDir(const std::string& product_code) {
  const auto folder = ports::CurrentPorts().files->TemporaryFolderOfSystem();
  if (!folder) RaiseApiError(folder.code);
  return JoinPath(folder.value, TempDirName(product_code));
}

bool RunsFrom(const std::string& folder) {
  const std::string program = ports::CurrentPorts().processes->OwnProgram();
  return LowerCase(SplitFileName(program).Folder) == LowerCase(folder);
}

}  // namespace

bool RunsInWorkingPlace(const std::string& product_code) {
  const UpdaterSettings& settings = GetUpdaterSettings();
  if (settings.IsElevated) return RunsFrom(ProtectedTempDir(product_code));
  return settings.IsTempCopy;
}

bool CreateTempDir(const std::string& product_code, std::string& temp_dir) try {
  if (GetUpdaterSettings().IsElevated) {
    temp_dir = ProtectedTempDir(product_code);
    if (RunsFrom(temp_dir)) return true;
    DeleteFolderTree(temp_dir);
    if (ports::CurrentPorts().files->CreateProtectedFolder(temp_dir)) return true;
    DownloadError(engine_texts::NoTempFolder(temp_dir), FailureKind::kNoRights);
    return false;
  }
  temp_dir = JoinPath(GetTemporaryFolder(), TempDirName(product_code));
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
