#include "engine/installation.h"

#include <algorithm>
#include <string>

#include "engine/engine_texts.h"
#include "engine/installed_files.h"
#include "engine/interruption_mark.h"
#include "engine/registration.h"
#include "foundation/file_utils.h"
#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "services/message_boxes.h"

namespace tmw {
namespace {

constexpr std::int32_t kAfterUnregistering = 10;  // milliseconds

void UninstallFile(const WuFileNode& file, const Manifest& manifest) {
  const std::string installed = InstalledPath(file);
  if (IsFileExists(installed)) {
    if (file.IsCom) {
      static_cast<void>(UnregisterDll(installed, true));
      ports::CurrentPorts().clock->Sleep(kAfterUnregistering);
    }
    DeleteFileRepeatedly(installed);
  }
  if (const auto companion = ScriptCompanion(file, manifest)) DeleteFile(*companion, true);
}

bool InstallFile(const ReleasePaths& release, const WuFileNode& file) {
  const std::string loaded = MakeComponentPlaces(release, file.OrigName).Loaded;
  const std::string installed = InstalledPath(file);
  if (!IsFileExists(loaded)) {
    DownloadError(engine_texts::LoadedFileMissing(loaded));
    return false;
  }
  std::string reason;
  if (!TryCreateFolderIfAbsent(file.Folder, reason)) {
    DownloadError(reason);
    return false;
  }
  if (IsFileExists(installed)) DeleteFileRepeatedly(installed);
  CopyFile(loaded, installed);
  return !file.IsCom || DoRegisterDll(installed, false);
}

void CleanupFolder(const std::string& folder) {
  if (folder.empty() || !IsFolderExists(folder)) return;
  DeleteFiles(JoinPath(folder, "*.*"), true);
  DeleteFiles(JoinPath(folder, "*"), true);
  static_cast<void>(ports::CurrentPorts().files->RemoveFolder(folder));
}

}  // namespace

bool Installation::UninstallOldFiles() {
  MarkInstallation(release_, manifest_.VersionID);
  return HandleFiles(
      engine_texts::kRemovingOld, [](const WuFileNode& file) { return file.NeedUpdate; },
      [this](const WuFileNode& file) {
        UninstallFile(file, manifest_);
        return true;
      });
}

bool Installation::InstallNewFiles() {
  return HandleFiles(
      engine_texts::kInstalling,
      [](const WuFileNode& file) { return file.NeedUpdate || file.IsCom; },
      [this](const WuFileNode& file) {
        if (file.NeedUpdate) return InstallFile(release_, file);
        static_cast<void>(DoRegisterDll(InstalledPath(file), true));
        return true;
      });
}

void Installation::CleanupTempFolders(const std::string& temp_dir) {
  events_.OnSetMainAction(engine_texts::kCleaning);
  events_.OnSetSubAction("");
  // The mark goes first: the installation is complete, even if a folder cannot be removed.
  UnmarkInstallations(temp_dir);
  for (const std::string& folder : {release_.Structures, release_.Scripts, release_.Loaded,
                                    release_.Parts, release_.Folder, temp_dir}) {
    CleanupFolder(folder);
  }
  events_.OnSetMainAction("");
}

// Takes one step for every file concerned; stops when one returns false.
bool Installation::HandleFiles(const char* action, bool (*is_concerned)(const WuFileNode& file),
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

}  // namespace tmw
