#include "product/working_place.h"

#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "product/product_texts.h"
#include "services/message_boxes.h"
#include "services/updater_settings.h"

namespace tmw {
namespace {

std::string ProtectedPlace(const std::string& name) {
  const auto folder = ports::CurrentPorts().files->TemporaryFolderOfSystem();
  if (!folder) RaiseApiError(folder.code);
  return JoinPath(folder.value, name);
}

bool RunsFrom(const std::string& folder) {
  const std::string program = ports::CurrentPorts().processes->OwnProgram();
  return LowerCase(SplitFileName(program).Folder) == LowerCase(folder);
}

}  // namespace

bool CreateWorkingPlace(const std::string& name, std::string& folder) {
  if (GetUpdaterSettings().IsElevated) {
    folder = ProtectedPlace(name);
    if (RunsFrom(folder)) return true;
    DeleteFolderTree(folder);
    if (ports::CurrentPorts().files->CreateProtectedFolder(folder)) return true;
    DownloadError(product_texts::NoTempFolder(folder), FailureKind::kNoRights);
    return false;
  }
  folder = JoinPath(GetTemporaryFolder(), name);
  std::string reason;
  if (TryCreateFolderIfAbsent(folder, reason) && IsFolderExists(folder)) return true;
  DownloadError(product_texts::NoTempFolder(folder), FailureKind::kNoRights);
  return false;
}

bool RunsInWorkingPlace(const std::string& name) {
  const UpdaterSettings& settings = GetUpdaterSettings();
  if (settings.IsElevated) return RunsFrom(ProtectedPlace(name));
  return settings.IsTempCopy;
}

}  // namespace tmw
