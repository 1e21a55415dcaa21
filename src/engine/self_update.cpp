#include "engine/self_update.h"

#include <cstdint>
#include <string>
#include <utility>

#include "engine/engine_texts.h"
#include "engine/fetching.h"
#include "engine/limits.h"
#include "engine/working_folders.h"
#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "product/own_files.h"
#include "services/message_boxes.h"
#include "services/processes.h"
#include "services/product_settings.h"
#include "services/run_module.h"
#include "services/updater_settings.h"
#include "sha256/sha256.h"
#include "transfer/inet.h"

namespace tmw {
namespace {

constexpr int kNumberedNames = 100;

ports::Processes& OwnProcess() {
  return *ports::CurrentPorts().processes;
}

// The first free name in the folder, after an attempt to delete the file that has it. A running
// program keeps its own file, so its successor gets the next number. Empty if no name is free.
std::string FindFreeName(const std::string& folder, const std::string& name) {
  const SplitName parts = SplitFileName(name);
  for (int number = 0; number <= kNumberedNames; ++number) {
    const std::string suffix = number == 0 ? "" : "_" + std::to_string(number);
    std::string candidate = JoinPath(folder, parts.Name + suffix + "." + parts.Extension);
    DeleteFile(candidate, true);
    if (!IsFileExists(candidate)) return candidate;
  }
  return {};
}

// The updater that was installed with the product, with its library; empty if there is none. Other
// programs may have written to the folder that this copy runs from.
std::string InstalledUpdater(const Manifest& manifest) {
  const std::string name = std::string(names::kUpdaterProgram) + OwnProcess().ProgramEnding();
  std::vector<std::string> folders;
  for (const WuFileNode& file : manifest.Files) {
    if (LowerCase(file.OrigName) == LowerCase(name)) folders.push_back(file.Folder);
  }
  const std::string root = GetProductRootPath();
  folders.push_back(JoinPath(root, names::kProgramFolder));
  folders.push_back(root);
  for (const std::string& folder : folders) {
    std::string program = JoinPath(folder, name);
    if (IsFileExists(program) && IsFileExists(JoinPath(folder, CompanionFileName())))
      return program;
  }
  return {};
}

bool IsProgram(const std::string& name) {
  return LowerCase(SplitFileName(name).Extension) == "exe";
}

bool VerifyUpdaterComponent(const std::string& url, const WuUpdaterComponent& component) {
  const std::string& file = component.LocalFileName;
  if (!IsFileExists(file)) {
    DownloadError(engine_texts::ComponentNotLoaded(url), FailureKind::kVanished);
    return false;
  }
  const std::int64_t length = GetFileLength(file);
  if (length != component.Size) {
    DownloadError(engine_texts::ComponentLengthDiffers(url, length, component.Size),
                  FailureKind::kDamagedFile);
    return false;
  }
  if (sha256::CSHA256().SHA256(ReadFileBytes(file)) != component.Hash) {
    DownloadError(engine_texts::ComponentHashDiffers(url), FailureKind::kDamagedFile);
    return false;
  }
  return true;
}

}  // namespace

SelfUpdate::SelfUpdate(UpdaterEvents& events, std::function<void()> exit_updater)
    : events_(events), exit_updater_(std::move(exit_updater)) {}

bool SelfUpdate::CopyToTempFolderAndRestart(const std::string& product_code,
                                            const std::string& old_version) {
  events_.OnSetupProgress(0, false);
  events_.OnSetMainAction(engine_texts::kCopyingUpdater);
  events_.OnSetSubAction("");
  std::string temp_dir;
  if (!CreateTempDir(product_code, temp_dir)) return false;
  const SplitName own = SplitFileName(OwnProcess().OwnProgram());
  std::string program = JoinPath(own.Folder, own.FileName());
  std::string library = JoinPath(own.Folder, CompanionFileName());
  if (!CopyModuleToTempFolder(program, temp_dir) || !CopyModuleToTempFolder(library, temp_dir))
    return false;
  events_.OnSetMainAction(engine_texts::kRestarting);
  events_.OnSetSubAction("");
  std::string options(names::kOptionTempCopy);
  if (!old_version.empty())
    options += " " + std::string(names::kOptionOldVersion) + " " + old_version;
  RunProcess(program, RestartLine(program, options), SplitFileName(program).Folder, false,
             kContinuesChain);
  exit_updater_();
  return true;
}

void SelfUpdate::RestartWithRights(const Manifest& manifest) {
  if (GetUpdaterSettings().IsElevated || !OwnProcess().CanGainRights()) return;
  const std::string program = InstalledUpdater(manifest);
  if (program.empty()) return;
  events_.OnSetMainAction(engine_texts::kRestarting);
  try {
    RunProcessInElevationMode(program, RestartLine(program, std::string(names::kOptionElevated)),
                              SplitFileName(program).Folder, false, kContinuesChain);
  } catch (const ProgramError&) {
    // Declined, most likely: what is in the way is reported instead.
    events_.OnSetMainAction("");
    return;
  }
  exit_updater_();
}

bool SelfUpdate::CopyModuleToTempFolder(std::string& module, const std::string& temp_dir) try {
  const std::string name = SplitFileName(module).FileName();
  events_.OnSetSubAction(engine_texts::CopyingFile(name));
  if (!IsFileExists(module)) {
    DownloadError(engine_texts::OwnFileMissing(JoinPath(".", name)), FailureKind::kOwnFiles);
    return false;
  }
  const std::string copy = JoinPath(temp_dir, name);
  CopyFile(module, copy);
  module = copy;
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "CopyModuleToTempFolder");
}

bool SelfUpdate::MayReplaceUpdater() {
  if (!GetUpdaterSettings().IsRestartedAfterSelfUpdate) return true;
  DownloadError(engine_texts::kStillTooOld, FailureKind::kByHand);
  return false;
}

bool SelfUpdate::DownloadUpdater(const std::string& loading_url, const std::string& temp_dir,
                                 std::vector<WuUpdaterComponent>& components) {
  events_.OnSetMainAction(engine_texts::kLoadingUpdater);
  for (WuUpdaterComponent& component : components) {
    if (!DownloadComponent(JoinUrl(loading_url, component.Name), temp_dir, component)) return false;
  }
  return true;
}

bool SelfUpdate::DownloadComponent(const std::string& url, const std::string& temp_dir,
                                   WuUpdaterComponent& component) {
  events_.OnSetSubAction(engine_texts::LoadingComponent(url));
  if (IsProgram(component.Name)) {
    component.LocalFileName = FindFreeName(temp_dir, component.Name);
    if (component.LocalFileName.empty()) {
      DownloadError(engine_texts::NoFreeName(component.Name, temp_dir), FailureKind::kNoRights);
      return false;
    }
  } else {
    component.LocalFileName = JoinPath(temp_dir, component.Name);
    DeleteFileRepeatedly(component.LocalFileName);
  }
  return FetchFile(events_, url, component.LocalFileName, MaxComponent(component.Size)) &&
         !events_.CancelPressed() && VerifyUpdaterComponent(url, component) &&
         !events_.CancelPressed();
}

bool SelfUpdate::RestartUpdater(const std::vector<WuUpdaterComponent>& components) {
  events_.OnSetMainAction(engine_texts::kRestarting);
  const bool is_started = StartNewUpdater(components);
  events_.OnSetMainAction("");
  events_.OnSetSubAction("");
  return is_started;
}

bool SelfUpdate::StartNewUpdater(const std::vector<WuUpdaterComponent>& components) {
  if (components.empty()) {
    DownloadError(engine_texts::kNoComponents, FailureKind::kWrongData);
    return false;
  }
  const std::string& program = components.front().LocalFileName;
  const ports::Status status = ports::CurrentPorts().files->MakeExecutable(program);
  if (!status) RaiseApiErrorWithMessage(engine_texts::ProgramNotPrepared(program), status.code);
  RunProcess(program, RestartLine(program, std::string(names::kOptionRestarted)), "", false,
             kContinuesChain);
  exit_updater_();
  return true;
}

}  // namespace tmw
