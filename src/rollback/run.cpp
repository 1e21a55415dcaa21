#include "rollback/run.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "database/database_paths.h"
#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "ports/file_probe.h"
#include "ports/ports.h"
#include "ports/power.h"
#include "product/interruption_mark.h"
#include "product/local_moment.h"
#include "product/obstacles.h"
#include "product/registration.h"
#include "product/rollback_mark.h"
#include "rollback/books.h"
#include "rollback/restoring.h"
#include "rollback/rollback_texts.h"
#include "services/message_boxes.h"
#include "services/product_settings.h"
#include "services/run_log.h"
#include "services/updater_settings.h"

namespace rollback {
namespace {

using tmw::RunOutcome;

bool IsClient() {
  return tmw::GetUpdaterSettings().IsClientInstallation;
}

RunOutcome Report(Verdict verdict, const std::string& reason) {
  if (verdict == Verdict::kCancelled) return RunOutcome::kRefused;
  if (verdict == Verdict::kRefused) {
    tmw::ShowInformation(texts::kTitle, reason);
    return RunOutcome::kRefused;
  }
  tmw::ShowWarning(texts::kTitle, reason);
  return RunOutcome::kFailed;
}

bool IsAnythingToDo(const Findings& findings) {
  return findings.Replaced > 0 || findings.Added > 0 || findings.IsUpdateUnfinished ||
         findings.BooksState == Books::kChanged;
}

tmw::LookPlan PlanLook(const tmw::KeptList& list, bool with_books) {
  tmw::LookPlan plan;
  plan.Folders.push_back(tmw::GetProductRootPath());
  plan.Files.push_back({tmw::RollbackMarkPath(), ports::Replacement::kRenameOver});
  for (const tmw::KeptFile& file : list.Files) {
    plan.Files.push_back({file.Path, ports::Replacement::kRenameOver});
    plan.Folders.push_back(tmw::SplitFileName(file.Path).Folder);
    plan.Registers = plan.Registers || (file.IsRegistered && !tmw::GetNoRegisteringParam());
  }
  for (const tmw::AddedFile& file : list.Added)
    plan.Files.push_back({file.Path});
  if (with_books) {
    const std::string database = tmw::UserDatabasePlace();
    plan.Files.push_back({database, ports::Replacement::kRenameOver});
    plan.Folders.push_back(tmw::SplitFileName(database).Folder);
  }
  return plan;
}

// Two versions must not be left mixed for want of room. Of other disks than the product's nothing
// is known. The books that have been unpacked go again if there is no room.
bool HasRoom(const tmw::KeptList& list, bool with_books) {
  ports::FileProbe& probe = *ports::CurrentPorts().file_probe;
  const std::string root = tmw::GetProductRootPath();
  const auto space = probe.SpaceOf(root);
  const std::int64_t needed = RoomNeeded(list);
  if (!space || space.value.free >= needed) return true;
  std::int64_t unpacked = 0;
  if (!IsClient()) {
    const std::string copy = tmw::NewUserDatabasePath();
    const auto of_books = probe.SpaceOf(tmw::SplitFileName(copy).Folder);
    const bool is_counted = with_books && of_books && of_books.value.disk == space.value.disk;
    unpacked = is_counted && tmw::IsFileExists(copy) ? tmw::GetFileLength(copy) : 0;
    DeleteUnusedCopies();
  }
  tmw::ShowWarning(texts::kTitle,
                   texts::NoRoom(root, needed + unpacked, space.value.free + unpacked),
                   tmw::FailureKind::kDiskFull);
  return false;
}

void WriteRecord(const tmw::KeptList& list, const std::string& set_aside) {
  const std::string path = tmw::JoinPath(tmw::GetProductRootPath(), tmw::names::kRollbackRecord);
  const std::string line =
      tmw::Joined({tmw::LocalMomentText(), list.NewVersion, list.OldVersion, set_aside}, "|");
  const ports::Status status =
      tmw::ReplaceFileBytes(path, "\xEF\xBB\xBF" + line + std::string(tmw::kCrLf));
  if (!status) tmw::RaiseApiErrorWithMessage(texts::RecordNotWritten(path), status.code);
}

// Everything is back: what the update and the rollback have left behind goes, the mark last. The
// list may be gone already.
void TidyUp(const std::optional<tmw::KeptList>& list, const std::string& set_aside) {
  for (const std::string& folder : UpdaterWorkingPlaces())
    tmw::UnmarkInstallations(folder);
  if (list) {
    RemoveMadeFolders(*list);
    WriteRecord(*list, set_aside);
    tmw::LogEvent("rolled_back",
                  {{"from", list->NewVersion}, {"to", list->OldVersion}, {"set_aside", set_aside}});
  }
  tmw::RemoveKept();
  tmw::RemoveRollbackMark();
  if (list) static_cast<void>(RemoveAdded(*list, Group::kOwnFiles));
}

void ShowEnd(const tmw::KeptList& list, const std::vector<std::string>& left,
             const std::string& set_aside, bool is_quiet) {
  if (is_quiet && left.empty()) return;
  std::string text = texts::Done(list.OldVersion);
  if (!set_aside.empty() && tmw::IsFileExists(set_aside))
    text += texts::kBreak + texts::SetAside(set_aside);
  if (!left.empty()) text += texts::kBreak + texts::LeftInPlace(left);
  tmw::ShowInformation(texts::kTitle, text);
}

// Returns false if components could not be registered and the user does not want to go on without:
// the next rollback tries again.
bool TakeSteps(const tmw::KeptList& list, const tmw::RollbackMark& mark, bool is_quiet,
               tmw::UpdaterEvents& events) {
  RestoreFiles(list, Group::kProgram, events);
  if (!mark.SetAside.empty()) ExchangeBooks(*list.Backup, mark.SetAside, events);
  const std::vector<std::string> reasons = RegisterRestored(list, events);
  if (!reasons.empty() && !tmw::AskQuestion(texts::kTitle, texts::NotRegistered(reasons)))
    return false;
  std::vector<std::string> left = RemoveAdded(list, Group::kProgram);
  RestoreFiles(list, Group::kDatabase, events);
  for (std::string& path : RemoveAdded(list, Group::kDatabase))
    left.push_back(std::move(path));
  RestoreFiles(list, Group::kOwnFiles, events);
  tmw::WriteRollbackMark({mark.SetAside, true});
  TidyUp(list, mark.SetAside);
  ShowEnd(list, left, mark.SetAside, is_quiet);
  return true;
}

// The decision of now or, if a rollback was interrupted, of then. Nothing if there is to be none.
std::optional<tmw::RollbackMark> AskWhatToDo(const Findings& findings, const Wishes& wishes) {
  const std::string set_aside =
      findings.BooksState == Books::kChanged ? NameToSetAside() : std::string();
  switch (Decide(findings, wishes, set_aside)) {
    case Decision::kFiles:
      return tmw::RollbackMark{};
    case Decision::kFilesAndBooks:
      return tmw::RollbackMark{set_aside};
    default:
      return std::nullopt;
  }
}

RunOutcome TidyUpOnly(const tmw::RollbackMark& mark) {
  std::string reason;
  const auto list = tmw::TryReadKeptList(reason);
  TidyUp(list, mark.SetAside);
  tmw::ShowInformation(texts::kTitle, texts::Done(list ? list->OldVersion : ""));
  return RunOutcome::kDone;
}

}  // namespace

RunOutcome BringBack(const Wishes& wishes, tmw::UpdaterEvents& events,
                     const std::function<void()>& on_denied) {
  std::optional<tmw::RollbackMark> mark = tmw::ReadRollbackMark();
  if (!tmw::IsRollbackUnderWay()) tmw::RemoveUnlisted();
  if (mark && !wishes.IsConfirmed && !wishes.Finishes &&
      !tmw::AskQuestion(texts::kTitle, texts::kFinishQuestion))
    return RunOutcome::kRefused;
  if (mark && mark->IsDone) return TidyUpOnly(*mark);
  if (!mark && wishes.Finishes) return Report(Verdict::kRefused, texts::kNothingToFinish);
  // Books that have been set aside need the backup no longer.
  const bool with_books =
      mark ? !mark->SetAside.empty() && !tmw::IsFileExists(mark->SetAside) : !wishes.FilesOnly;
  Findings findings;
  std::string reason;
  if (const Verdict verdict = Verify(with_books, events, findings, reason);
      verdict != Verdict::kGood)
    return Report(verdict, reason);
  if (!mark) {
    if (!IsAnythingToDo(findings) && !tmw::IsRollbackUnderWay())
      return Report(Verdict::kRefused, texts::kNothingToDo);
    mark = AskWhatToDo(findings, wishes);
    if (!mark) return RunOutcome::kRefused;
  }
  const tmw::KeptList& list = findings.List;
  if (!tmw::IsWayClear(PlanLook(list, !mark->SetAside.empty()), on_denied))
    return RunOutcome::kFailed;
  if (!IsClient()) {
    CompletePlacing();
    if (mark->SetAside.empty()) DeleteUnusedCopies();
  }
  if (!mark->SetAside.empty() &&
      (!list.Backup || !PrepareBooks(*list.Backup, mark->SetAside, events)))
    return RunOutcome::kFailed;
  if (!tmw::IsRollbackUnderWay() && !HasRoom(list, !mark->SetAside.empty()))
    return RunOutcome::kFailed;
  events.OnSetButtonMode(0);
  const auto awake = ports::CurrentPorts().power->KeepAwake(texts::kTitle, texts::kBusy);
  tmw::WriteRollbackMark(*mark);
  return TakeSteps(list, *mark, wishes.IsConfirmed, events) ? RunOutcome::kDone
                                                            : RunOutcome::kFailed;
}

RunOutcome Rehearse(const Wishes& wishes, tmw::UpdaterEvents& events, std::string& report) {
  Findings findings;
  const Verdict verdict = Verify(!wishes.FilesOnly, events, findings, report);
  if (verdict == Verdict::kDamaged) return RunOutcome::kFailed;
  if (verdict != Verdict::kGood) return RunOutcome::kRefused;
  const bool has_books = findings.BooksState == Books::kChanged;
  report = !IsAnythingToDo(findings) ? texts::kNothingToDo
                                     : Summary(findings, has_books ? NameToSetAside() : "") +
                                           texts::kBreak + texts::kBreak + texts::kAllVerified;
  return IsAnythingToDo(findings) ? RunOutcome::kDone : RunOutcome::kRefused;
}

}  // namespace rollback
