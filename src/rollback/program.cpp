#include "rollback/program.h"

#include <iostream>

#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/version.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "product/kept_list.h"
#include "product/own_files.h"
#include "product/rollback_mark.h"
#include "product/start_conditions.h"
#include "product/working_place.h"
#include "rollback/rollback_texts.h"
#include "rollback/run.h"
#include "rollback/window.h"
#include "services/message_boxes.h"
#include "services/mutexes.h"
#include "services/processes.h"
#include "services/product_settings.h"
#include "services/run_log.h"
#include "services/updater_settings.h"

namespace rollback {
namespace {

namespace names = tmw::names;
using tmw::RunOutcome;

struct Options {
  Wishes wishes;
  bool is_rehearsal = false;
  tmw::UpdaterSettings settings;
  std::string unknown;  // the first argument that is not understood
};

Options ReadOptions(const std::vector<std::string>& arguments) {
  Options options;
  for (const std::string& argument : arguments) {
    if (argument == "--yes") {
      options.wishes.IsConfirmed = true;
    } else if (argument == "--files-only") {
      options.wishes.FilesOnly = true;
    } else if (argument == "--finish") {
      options.wishes.Finishes = true;
    } else if (argument == "--dry-run") {
      options.is_rehearsal = true;
    } else if (argument == names::kOptionTempCopy) {
      options.settings.IsTempCopy = true;
    } else if (argument == names::kOptionElevated) {
      options.settings.IsElevated = true;
    } else {
      options.unknown = argument;
      break;
    }
  }
  return options;
}

std::string WorkingPlace() {
  return std::string(names::kProductCode) + std::string(names::kRollbackFolderEnding);
}

bool IsInTerminal() {
  return ports::CurrentPorts().processes->HasTerminal() ||
         !ports::CurrentPorts().front_end->CanAsk();
}

RunOutcome Refuse(const std::string& text) {
  tmw::ShowInformation(texts::kTitle, text);
  return RunOutcome::kRefused;
}

constexpr tmw::WaitingTexts kWaits = {texts::kTitle, texts::ApplicationIsOpen,
                                      texts::UpdaterIsRunning};

// The program in the product's folder can then be exchanged too.
RunOutcome GoOnAsCopy() {
  std::string folder;
  if (!tmw::CreateWorkingPlace(WorkingPlace(), folder)) return RunOutcome::kFailed;
  const tmw::SplitName own = tmw::SplitFileName(ports::CurrentPorts().processes->OwnProgram());
  for (const std::string& name : {own.FileName(), tmw::CompanionFileName()}) {
    const std::string file = tmw::JoinPath(own.Folder, name);
    if (!tmw::IsFileExists(file)) {
      tmw::ShowWarning(texts::kTitle, texts::OwnFileMissing(file), tmw::FailureKind::kOwnFiles);
      return RunOutcome::kFailed;
    }
    tmw::CopyFile(file, tmw::JoinPath(folder, name));
  }
  const std::string copy = tmw::JoinPath(folder, own.FileName());
  tmw::ReleaseUpdaterLock();
  tmw::RunProcess(copy, tmw::RestartLine(copy, std::string(names::kOptionTempCopy)), "", false,
                  tmw::kContinuesChain);
  return RunOutcome::kDone;
}

// Starts the program of the product's folder with administrator rights and ends this process.
// Returns if that cannot be done or the user declines.
void RestartWithRights() {
  ports::Processes& processes = *ports::CurrentPorts().processes;
  if (tmw::GetUpdaterSettings().IsElevated || !processes.CanGainRights()) return;
  const std::string program =
      tmw::JoinPath(tmw::JoinPath(tmw::GetProductRootPath(), names::kProgramFolder),
                    tmw::SplitFileName(processes.OwnProgram()).FileName());
  if (!tmw::IsFileExists(program)) return;
  try {
    tmw::RunProcessInElevationMode(program,
                                   tmw::RestartLine(program, std::string(names::kOptionElevated)),
                                   tmw::SplitFileName(program).Folder, false, tmw::kContinuesChain);
  } catch (const tmw::ProgramError&) {
    return;  // declined, most likely: what is in the way is reported instead
  }
  tmw::ReleaseUpdaterLock();
  static_cast<void>(processes.Terminate(0));
}

RunOutcome BringBackInWindow(const Wishes& wishes) {
  RunOutcome outcome = RunOutcome::kFailed;
  Window window;
  window.Run([&] {
    try {
      outcome = BringBack(wishes, window, RestartWithRights);
    } catch (...) {
      const tmw::ProgramError error = tmw::CurrentError();
      tmw::LogEvent(
          "error",
          {{"number", error.Number}, {"text", error.Description}, {"chain", error.Source}});
      const bool is_under_way = tmw::IsRollbackUnderWay();
      tmw::ShowWarning(texts::kTitle,
                       is_under_way ? texts::Unfinished(error.Description) : error.Description,
                       tmw::KindOfNumber(error.Number));
    }
  });
  return outcome;
}

RunOutcome Work(const Options& options) {
  const std::string root = tmw::GetProductRootPath();
  if (tmw::HasClientLists(root)) return Refuse(texts::kNetworkInstallation);
  if (!tmw::IsRollbackUnderWay() && !tmw::IsFolderExists(tmw::KeptRoot()))
    return Refuse(texts::kNothingKept);
  if (!tmw::WaitForOthersAndLock(root, kWaits)) return RunOutcome::kRefused;
  if (!tmw::RunsInWorkingPlace(WorkingPlace())) return GoOnAsCopy();
  const RunOutcome outcome = BringBackInWindow(options.wishes);
  tmw::ReleaseUpdaterLock();
  return outcome;
}

RunOutcome RehearseAndReport(const Wishes& wishes) {
  tmw::SilentEvents events;
  std::string report;
  const RunOutcome outcome = Rehearse(wishes, events, report);
  if (!IsInTerminal()) {
    tmw::ShowInformation(texts::kTitle, report);
    return outcome;
  }
  for (std::size_t at = 0; (at = report.find('\r', at)) != std::string::npos;)
    report.erase(at, 1);
  (outcome == RunOutcome::kDone ? std::cout : std::cerr) << report << '\n';
  return outcome;
}

RunOutcome RunWith(Options& options) {
  options.settings.IsClientInstallation = tmw::IsClientInstallation();
  tmw::SetUpdaterSettings(options.settings);
  tmw::LogEvent("rollback_start", {{"program", ports::CurrentPorts().processes->OwnProgram()},
                                   {"build", tmw::GetAppVersionString()},
                                   {"rehearsal", options.is_rehearsal},
                                   {"temp_copy", options.settings.IsTempCopy}});
  try {
    return options.is_rehearsal ? RehearseAndReport(options.wishes) : Work(options);
  } catch (...) {
    const tmw::ProgramError error = tmw::CurrentError();
    tmw::ShowWarning(texts::kTitle, error.Description, tmw::KindOfNumber(error.Number));
    return RunOutcome::kFailed;
  }
}

}  // namespace

int Run(const std::vector<std::string>& arguments) {
  if (arguments.size() == 1 && arguments[0] == "--help") {
    std::cout << texts::kHelp << '\n';
    return 0;
  }
  if (arguments.size() == 1 && arguments[0] == "--version") {
    std::cout << "TmRollback " << tmw::GetAppVersionString() << '\n';
    return 0;
  }
  Options options = ReadOptions(arguments);
  RunOutcome outcome = RunOutcome::kBadCommandLine;
  if (options.unknown.empty()) {
    outcome = RunWith(options);
  } else {
    std::cerr << texts::UnknownArgument(options.unknown) << '\n';
  }
  const int exit_code = static_cast<int>(outcome);
  tmw::LogEvent("rollback_end", {{"exit_code", exit_code}});
  return exit_code;
}

}  // namespace rollback
