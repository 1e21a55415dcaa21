#include "rollback/verification.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "database/database_paths.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "packages/hash_api.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "product/interruption_mark.h"
#include "product/rollback_mark.h"
#include "rollback/rollback_texts.h"
#include "services/updater_settings.h"
#include "sha256/sha256.h"
#include "unzip/unzip.h"

namespace rollback {
namespace {

bool HasContent(const std::string& path, std::int64_t length, const std::string& hash) {
  return tmw::IsFileExists(path) && tmw::GetFileLength(path) == length &&
         tmw::GetFileHash(path) == hash;
}

// The release that a mark of the updater names; nothing without a mark.
std::optional<std::string> UnfinishedRelease() {
  for (const std::string& folder : UpdaterWorkingPlaces()) {
    if (auto release = tmw::InterruptedRelease(folder)) return release;
  }
  return std::nullopt;
}

bool IsDescribed(const std::string& release, const tmw::KeptList& list) {
  const std::vector<std::string>& releases = list.Releases;
  return !list.IsUnderRepair &&
         std::find(releases.begin(), releases.end(), release) != releases.end();
}

Verdict CompareFiles(Findings& findings, tmw::UpdaterEvents& events, std::string& reason) {
  const std::vector<tmw::KeptFile>& files = findings.List.Files;
  events.OnSetupProgress(static_cast<std::int32_t>(files.size()), false);
  std::int32_t count = 0;
  for (const tmw::KeptFile& file : files) {
    const std::string place = tmw::KeptPlace(findings.List, file);
    events.OnSetSubAction(tmw::SplitFileName(file.Path).FileName());
    if (!HasContent(place, file.Length, file.Hash)) {
      reason = texts::KeptFileSpoiled(place);
      return Verdict::kDamaged;
    }
    if (!HasContent(file.Path, file.Length, file.Hash)) ++findings.Replaced;
    events.OnSetProgress(++count);
    if (events.CancelPressed()) return Verdict::kCancelled;
  }
  for (const tmw::AddedFile& file : findings.List.Added)
    findings.Added += tmw::IsFileExists(file.Path) ? 1 : 0;
  return Verdict::kGood;
}

Verdict CompareBackup(const tmw::KeptBackup& backup, tmw::UpdaterEvents& events,
                      std::string& reason) {
  events.OnSetupProgress(0, false);
  events.OnSetSubAction(tmw::SplitFileName(backup.Archive).FileName());
  sha256::Stream stream;
  bool is_cancelled = false;
  const auto take = [&](const char* bytes, std::size_t length) {
    stream.Update(bytes, length);
    is_cancelled = events.CancelPressed();
    return !is_cancelled;
  };
  std::string why;
  const bool is_whole = tmw::TryUnpackOnlyEntry(backup.Archive, take, why);
  if (is_cancelled) return Verdict::kCancelled;
  if (is_whole && tmw::GetHashString(stream.Finish()) == backup.Hash) return Verdict::kGood;
  reason = texts::BackupSpoiled(backup.Archive, is_whole ? texts::kOtherBooks : why);
  return Verdict::kDamaged;
}

}  // namespace

std::vector<std::string> UpdaterWorkingPlaces() {
  const std::string name =
      std::string(tmw::names::kProductCode) + std::string(tmw::names::kTempFolderEnding);
  std::vector<std::string> places = {tmw::JoinPath(tmw::GetTemporaryFolder(), name)};
  const auto of_system = ports::CurrentPorts().files->TemporaryFolderOfSystem();
  if (of_system) places.push_back(tmw::JoinPath(of_system.value, name));
  return places;
}

Verdict Verify(bool with_books, tmw::UpdaterEvents& events, Findings& findings,
               std::string& reason) {
  auto list = tmw::TryReadKeptList(reason);
  if (!list) {
    const bool is_absent = reason.empty();
    reason = is_absent ? texts::kNothingKept : texts::ListUnusable(reason);
    return is_absent ? Verdict::kRefused : Verdict::kDamaged;
  }
  findings = {};
  findings.List = *std::move(list);
  if (const auto release = UnfinishedRelease()) {
    findings.IsUpdateUnfinished = true;
    if (!IsDescribed(*release, findings.List) && !tmw::IsRollbackUnderWay()) {
      reason = texts::kFinishUpdateFirst;
      return Verdict::kRefused;
    }
  }
  events.OnSetMainAction(texts::kVerifying);
  events.OnSetIcon("scan");
  const Verdict of_files = CompareFiles(findings, events, reason);
  if (of_files != Verdict::kGood) return of_files;
  const auto& backup = findings.List.Backup;
  if (backup && !tmw::GetUpdaterSettings().IsClientInstallation) {
    const bool is_same = HasContent(tmw::UserDatabasePlace(), backup->Length, backup->Hash);
    findings.BooksState = is_same ? Books::kUnchanged : Books::kChanged;
    if (with_books && !is_same) {
      const Verdict of_books = CompareBackup(*backup, events, reason);
      if (of_books != Verdict::kGood) return of_books;
    }
  }
  events.ClearProgress();
  events.OnSetIcon("");
  return Verdict::kGood;
}

}  // namespace rollback
