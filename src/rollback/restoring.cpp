#include "rollback/restoring.h"

#include <algorithm>
#include <cstdint>
#include <ranges>

#include "database/database_paths.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "packages/hash_api.h"
#include "packages/hashed_copy.h"
#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "product/own_files.h"
#include "product/registration.h"
#include "rollback/rollback_texts.h"
#include "services/run_log.h"
#include "services/updater_settings.h"

namespace rollback {
namespace {

constexpr std::int32_t kAfterUnregistering = 10;  // milliseconds

bool IsRestored(const tmw::KeptFile& file) {
  return tmw::IsFileExists(file.Path) && tmw::GetFileLength(file.Path) == file.Length &&
         tmw::GetFileHash(file.Path) == file.Hash;
}

void Unregister(const std::string& path) {
  static_cast<void>(tmw::UnregisterDll(path, true));
  ports::CurrentPorts().clock->Sleep(kAfterUnregistering);
}

void Restore(const tmw::KeptList& list, const tmw::KeptFile& file) {
  tmw::DeleteGrowingCopy(file.Path);
  if (IsRestored(file)) return;
  if (file.IsRegistered && tmw::IsFileExists(file.Path)) Unregister(file.Path);
  tmw::CreateFolderIfAbsent(tmw::SplitFileName(file.Path).Folder);
  const std::string kept = tmw::KeptPlace(list, file);
  if (!tmw::CopyFileHashed(kept, file.Path, file.Hash))
    tmw::RaiseProgramError(texts::KeptFileSpoiled(kept));
  tmw::LogEvent("restored", {{"file", file.Path}});
}

}  // namespace

Group GroupOf(const std::string& path) {
  const tmw::SplitName split = tmw::SplitFileName(path);
  if (tmw::IsOwnFileName(split.FileName())) return Group::kOwnFiles;
  // A client may know no folder of databases.
  if (tmw::GetUpdaterSettings().IsClientInstallation) return Group::kProgram;
  const bool is_of_database =
      tmw::PathKey(path) == tmw::PathKey(tmw::InstalledReferencePath()) ||
      tmw::PathKey(split.Folder) == tmw::PathKey(tmw::InstalledScriptsFolder());
  return is_of_database ? Group::kDatabase : Group::kProgram;
}

std::int64_t RoomNeeded(const tmw::KeptList& list) {
  std::int64_t growth = 0;
  std::int64_t largest = 0;
  for (const tmw::KeptFile& file : list.Files) {
    if (IsRestored(file)) continue;
    const std::int64_t present = tmw::IsFileExists(file.Path) ? tmw::GetFileLength(file.Path) : 0;
    growth += std::max<std::int64_t>(file.Length - present, 0);
    largest = std::max(largest, file.Length);
  }
  return growth + largest;
}

void RestoreFiles(const tmw::KeptList& list, Group group, tmw::UpdaterEvents& events) {
  events.OnSetMainAction(texts::kRestoring);
  events.OnSetIcon("install");
  events.OnSetupProgress(static_cast<std::int32_t>(list.Files.size()), false);
  std::int32_t count = 0;
  for (const tmw::KeptFile& file : list.Files) {
    events.OnSetProgress(++count);
    if (GroupOf(file.Path) != group) continue;
    events.OnSetSubAction(tmw::SplitFileName(file.Path).FileName());
    Restore(list, file);
    // Keeps the window responsive: nothing here can be cancelled.
    ports::CurrentPorts().front_end->RunPendingEvents();
  }
  events.ClearProgress();
}

std::vector<std::string> RegisterRestored(const tmw::KeptList& list, tmw::UpdaterEvents& events) {
  std::vector<std::string> reasons;
  events.OnSetMainAction(texts::kRegistering);
  events.OnSetIcon("install");
  for (const tmw::KeptFile& file : list.Files) {
    if (!file.IsRegistered) continue;
    events.OnSetSubAction(tmw::SplitFileName(file.Path).FileName());
    std::string reason;
    if (!tmw::TryRegisterDll(file.Path, reason)) reasons.push_back(reason);
  }
  events.ClearProgress();
  return reasons;
}

std::vector<std::string> RemoveAdded(const tmw::KeptList& list, Group group) {
  std::vector<std::string> left;
  for (const tmw::AddedFile& file : list.Added) {
    if (GroupOf(file.Path) != group) continue;
    tmw::DeleteGrowingCopy(file.Path);
    if (!tmw::IsFileExists(file.Path)) continue;
    if (!file.Hash.empty() && tmw::GetFileHash(file.Path) != file.Hash) {
      left.push_back(file.Path);
      continue;
    }
    if (file.IsRegistered) Unregister(file.Path);
    tmw::DeleteFileRepeatedly(file.Path);
    tmw::LogEvent("removed", {{"file", file.Path}});
  }
  return left;
}

void RemoveMadeFolders(const tmw::KeptList& list) {
  for (const std::string& folder : std::views::reverse(list.MadeFolders))
    static_cast<void>(ports::CurrentPorts().files->RemoveFolder(folder));
}

}  // namespace rollback
