#include "engine/release_paths.h"

#include "foundation/contract_names.h"
#include "foundation/file_utils.h"

namespace tmw {
namespace {

constexpr const char* kInterruptionMark = "_Installing.txt";

std::string WithEnding(const std::string& name, std::string_view ending) {
  return name + std::string(ending);
}

}  // namespace

ReleasePaths MakeReleasePaths(const std::string& temp_dir, const std::string& version_id) {
  ReleasePaths paths;
  paths.Folder = JoinPath(temp_dir, version_id);
  paths.Parts = JoinPath(paths.Folder, names::kPartsFolder);
  paths.Loaded = JoinPath(paths.Folder, names::kLoadedFolder);
  paths.Scripts = JoinPath(paths.Folder, names::kScriptsFolder);
  paths.Structures = JoinPath(paths.Folder, names::kStructuresFolder);
  return paths;
}

std::string MakeTempDirPath(const std::string& product_code) {
  return JoinPath(GetTemporaryFolder(), WithEnding(product_code, names::kTempFolderEnding));
}

std::string PartPath(const ReleasePaths& release, const std::string& name) {
  return JoinPath(release.Parts, WithEnding(name, names::kPackageEnding));
}

std::string UnpackedPath(const ReleasePaths& release, const std::string& name) {
  return JoinPath(release.Parts, name);
}

std::string LoadedPath(const ReleasePaths& release, const std::string& name) {
  return JoinPath(release.Loaded, name);
}

std::string InterruptionMarkPath(const ReleasePaths& release) {
  return JoinPath(release.Folder, kInterruptionMark);
}

}  // namespace tmw
