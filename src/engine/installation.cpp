#include "engine/installation.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "engine/engine_texts.h"
#include "engine/installed_files.h"
#include "engine/verified_copy.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "product/interruption_mark.h"
#include "product/registration.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "services/product_settings.h"
#include "services/run_log.h"

namespace tmw {
namespace {

constexpr std::int32_t kAfterUnregistering = 10;  // milliseconds
constexpr std::size_t kShownReasons = 5;          // of failed registrations, in one box

bool IsReplacedInOneStep(const WuFileNode& file) {
  return file.NeedUpdate && IsUpdatersOwnFile(file);
}

void ShowNotRegistered(std::vector<std::string> reasons) {
  if (reasons.empty()) return;
  const std::size_t unnamed = reasons.size() - std::min(reasons.size(), kShownReasons);
  reasons.resize(reasons.size() - unnamed);
  ShowWarning(box_titles::kProductUpdate,
              engine_texts::UnchangedNotRegistered(Joined(reasons, kCrLf), unnamed),
              FailureKind::kRegistration);
}

}  // namespace

Installation::Installation(const Manifest& manifest, ReleasePaths release, std::string temp_dir,
                           UpdaterEvents& events)
    : manifest_(manifest),
      release_(std::move(release)),
      temp_dir_(std::move(temp_dir)),
      events_(events),
      was_interrupted_(IsInstallationInterrupted(temp_dir_)) {}

bool Installation::ReplaceOwnFiles() {
  MarkInstallation(release_.Folder, manifest_.VersionID);
  is_under_way_ = true;
  if (std::none_of(manifest_.Files.begin(), manifest_.Files.end(), IsReplacedInOneStep))
    return true;
  return HandleFiles(engine_texts::kInstalling, IsReplacedInOneStep,
                     [this](const WuFileNode& file) { return InstallFile(file); });
}

bool Installation::UninstallOldFiles() {
  return HandleFiles(
      engine_texts::kRemovingOld,
      [](const WuFileNode& file) { return file.NeedUpdate && !IsReplacedInOneStep(file); },
      [this](const WuFileNode& file) {
        UninstallFile(file);
        return true;
      });
}

bool Installation::InstallNewFiles() {
  std::vector<std::string> reasons;
  const bool result = HandleFiles(
      engine_texts::kInstalling,
      [](const WuFileNode& file) {
        return (file.NeedUpdate || file.IsCom) && !IsReplacedInOneStep(file);
      },
      [&](const WuFileNode& file) {
        if (file.NeedUpdate) return InstallFile(file);
        std::string reason;
        if (!TryRegisterDll(InstalledPath(file), reason)) reasons.push_back(reason);
        return true;
      });
  if (was_interrupted_) ShowNotRegistered(std::move(reasons));
  return result;
}

void Installation::CleanupTempFolders() {
  events_.OnSetMainAction(engine_texts::kCleaning);
  events_.OnSetSubAction("");
  // The marks go first: the installation is complete, even if a folder cannot be removed.
  UnmarkInstallations(temp_dir_);
  is_under_way_ = false;
  for (const std::string& folder : {release_.Structures, release_.Scripts, release_.Loaded,
                                    release_.Parts, release_.Folder, temp_dir_}) {
    DeleteFolderTree(folder);
  }
  events_.OnSetMainAction("");
}

std::string Installation::UpdaterToStart() const {
  const ports::Ports& ports = ports::CurrentPorts();
  const std::string name = std::string(names::kUpdaterProgram) + ports.processes->ProgramEnding();
  std::vector<std::string> places = {
      JoinPath(JoinPath(GetProductRootPath(), names::kProgramFolder), name)};
  for (const WuFileNode& file : manifest_.Files) {
    if (EqualIgnoringCase(file.OrigName, name)) places.push_back(InstalledPath(file));
  }
  const auto found = std::find_if(places.rbegin(), places.rend(), IsFileExists);
  return found != places.rend() ? *found : ports.processes->OwnProgram();
}

// Takes one step for every file concerned; stops when one returns false.
bool Installation::HandleFiles(const char* action,
                               const std::function<bool(const WuFileNode& file)>& is_concerned,
                               const std::function<bool(const WuFileNode& file)>& step) {
  const std::vector<WuFileNode>& files = manifest_.Files;
  events_.OnSetMainAction(action);
  const auto concerned = std::count_if(files.begin(), files.end(), is_concerned);
  events_.OnSetupProgress(static_cast<std::int32_t>(concerned), false);
  std::int32_t count = 0;
  for (const WuFileNode& file : files) {
    if (!is_concerned(file)) continue;
    events_.OnSetSubAction(file.OrigName);
    if (!step(file)) return false;
    events_.OnSetProgress(++count);
    // Keeps the window responsive: nothing here asks for a cancel, which would run events.
    ports::CurrentPorts().front_end->RunPendingEvents();
  }
  events_.ClearProgress();
  return true;
}

void Installation::UninstallFile(const WuFileNode& file) {
  const std::string installed = InstalledPath(file);
  if (IsFileExists(installed)) {
    if (file.IsCom) {
      static_cast<void>(UnregisterDll(installed, true));
      ports::CurrentPorts().clock->Sleep(kAfterUnregistering);
    }
    RemoveInstalled(installed, Need::kMust);
  }
  const auto companion = ScriptCompanion(file, manifest_);
  if (companion) RemoveInstalled(*companion, Need::kMay);
}

bool Installation::InstallFile(const WuFileNode& file) {
  const std::string loaded = MakeComponentPlaces(release_, file.OrigName).Loaded;
  const std::string installed = InstalledPath(file);
  if (!IsFileExists(loaded)) {
    DownloadError(engine_texts::LoadedFileMissing(loaded), FailureKind::kVanished);
    return false;
  }
  std::string reason;
  if (!TryCreateFolderIfAbsent(file.Folder, reason)) {
    DownloadError(reason, FailureKind::kNoRights);
    return false;
  }
  if (!IsReplacedInOneStep(file) && IsFileExists(installed))
    RemoveInstalled(installed, Need::kMust);
  if (!CopyVerified(file, loaded, installed)) return false;
  LogEvent("installed", {{"file", installed}});
  return !file.IsCom || DoRegisterDll(installed, false);
}

void Installation::RemoveInstalled(const std::string& path, Need need) {
  if (need == Need::kMust) {
    DeleteFileRepeatedly(path);
  } else {
    DeleteFile(path, true);
  }
  LogEvent("removed", {{"file", path}});
}

}  // namespace tmw
