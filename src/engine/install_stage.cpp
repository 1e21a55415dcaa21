#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "database/database_paths.h"
#include "engine/engine_texts.h"
#include "engine/interruption_mark.h"
#include "engine/ks_updater.h"
#include "engine/registration.h"
#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "services/updater_settings.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";

constexpr std::int32_t kAfterUnregisteringMs = 10;
constexpr const char* kProbe = "TmWebUpdate.probe";
constexpr const char* kScriptEnding = ".tms";
constexpr const char* kScriptCompanionEnding = ".xml";

std::string InstalledPath(const WuFileNode& file) {
  return JoinPath(file.Folder, file.OrigName);
}

// A script of the product has a description of the same base name beside it, which is never part of
// a release and goes with the script.
void DeleteScriptCompanion(const WuFileNode& file) {
  if (!LowerCase(file.OrigName).ends_with(kScriptEnding)) return;
  DeleteFile(JoinPath(file.Folder, SplitFileName(file.OrigName).Name + kScriptCompanionEnding),
             true);
}

void UninstallFile(const WuFileNode& file) {
  const std::string installed = InstalledPath(file);
  if (IsFileExists(installed)) {
    if (file.IsCom) {
      static_cast<void>(UnregisterDll(installed, true));
      ports::CurrentPorts().clock->Sleep(kAfterUnregisteringMs);
    }
    DeleteFileRepeatedly(installed);
  }
  DeleteScriptCompanion(file);
}

bool InstallFile(const ReleasePaths& release, const WuFileNode& file) {
  const std::string loaded = LoadedPath(release, file.OrigName);
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

// The folder itself, or the nearest one above it that is there.
std::string ExistingPart(std::string folder) {
  while (!IsFolderExists(folder)) {
    std::string above = SplitFileName(folder).Folder;
    if (above.empty() || above == folder) break;
    folder = std::move(above);
  }
  return folder;
}

ports::Status TryToWrite(const std::string& folder) {
  ports::FileSystem& files = *ports::CurrentPorts().files;
  const std::string probe = JoinPath(folder, kProbe);
  static_cast<void>(files.RemoveFile(probe));
  const auto opened = files.Open(probe, ports::FileMode::kCreateNew);
  if (!opened) return ports::Status::Failure(opened.code);
  const ports::Status closed = opened.value->Close();
  const ports::Status removed = files.RemoveFile(probe);
  return closed ? removed : closed;
}

void CleanupFolder(const std::string& folder) {
  if (folder.empty() || !IsFolderExists(folder)) return;
  DeleteFiles(JoinPath(folder, "*.*"), true);
  DeleteFiles(JoinPath(folder, "*"), true);
  static_cast<void>(ports::CurrentPorts().files->RemoveFolder(folder));
}

}  // namespace

// Told before anything is downloaded, let alone removed.
bool KsUpdater::CanReplaceFiles() {
  std::set<std::string> folders;
  for (const WuFileNode& file : files_) {
    if (file.NeedUpdate) folders.insert(ExistingPart(file.Folder));
  }
  if (!GetUpdaterSettings().IsClientInstallation) {
    folders.insert(database_folder_);
    folders.insert(SplitFileName(UserDatabasePlace()).Folder);
  }
  for (const std::string& folder : folders) {
    const ports::Status written = TryToWrite(folder);
    if (written) continue;
    DownloadError(engine_texts::FolderNotWritable(folder, GetApiErrorText(written.code, "")));
    return false;
  }
  return true;
}

// Counted on the bar. False: a step has told the user why the run ends.
bool KsUpdater::HandleFiles(const char* action, bool (*is_concerned)(const WuFileNode& file),
                            const std::function<bool(const WuFileNode& file)>& step) {
  SetMainAction(action);
  const auto concerned = std::count_if(files_.begin(), files_.end(), is_concerned);
  SetupProgress(static_cast<std::int32_t>(concerned), false);
  std::int32_t count = 0;
  for (const WuFileNode& file : files_) {
    if (!is_concerned(file)) continue;
    SetSubAction(file.OrigName);
    if (!step(file)) return false;
    SetProgress(++count);
    // Nothing can be cancelled here, but the window can be moved and uncovered.
    ports::CurrentPorts().front_end->RunPendingEvents();
  }
  ClearProgress();
  return true;
}

bool KsUpdater::UninstallOldFiles() try {
  MarkInstallation(release_, version_id_);
  return HandleFiles(
      engine_texts::kRemovingOld, [](const WuFileNode& file) { return file.NeedUpdate; },
      [](const WuFileNode& file) {
        UninstallFile(file);
        return true;
      });
} catch (...) {
  ReRaiseError(kModule, "UninstallOldFiles");
}

bool KsUpdater::InstallNewFiles() try {
  return HandleFiles(
      engine_texts::kInstalling,
      [](const WuFileNode& file) { return file.NeedUpdate || file.IsCom; },
      [this](const WuFileNode& file) {
        if (file.NeedUpdate) return InstallFile(release_, file);
        // An unchanged component is registered again; that it fails is nothing new.
        static_cast<void>(DoRegisterDll(InstalledPath(file), true));
        return true;
      });
} catch (...) {
  ReRaiseError(kModule, "InstallNewFiles");
}

void KsUpdater::CleanupTempFolders() try {
  SetMainAction(engine_texts::kCleaning);
  SetSubAction("");
  // First of all: the installation is complete now, whatever becomes of the rest.
  UnmarkInstallations(temp_dir_);
  for (const std::string& folder : {release_.Structures, release_.Scripts, release_.Loaded,
                                    release_.Parts, release_.Folder, temp_dir_}) {
    CleanupFolder(folder);
  }
  SetMainAction("");
} catch (...) {
  ReRaiseError(kModule, "CleanupTempFolders");
}

}  // namespace tmw
