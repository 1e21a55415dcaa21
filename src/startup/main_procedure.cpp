#include "startup/main_procedure.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/version.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "ports/settings_store.h"
#include "product/rollback_mark.h"
#include "product/start_conditions.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "services/mutexes.h"
#include "services/processes.h"
#include "services/product_settings.h"
#include "services/run_log.h"
#include "services/run_outcome.h"
#include "services/updater_settings.h"
#include "startup/default_urls.h"
#include "startup/start_up_texts.h"

namespace tmw {
namespace {

constexpr const char* kModule = "miMain";

constexpr std::int32_t kNamedProxy = 3;
constexpr std::int32_t kLastProxyType = 4;

std::string MachineSetting(std::string_view name) {
  return GetProductSetting_String(true, std::string(names::kGeneralSection), std::string(name), "");
}

void ReadUpdateSettings(UpdaterSettings& settings) {
  const std::string section(names::kAutoUpdateSection);
  settings.ProxyType = GetProductSetting_LongRanged(
      false, section, std::string(names::kProxyTypeSetting), 0, kLastProxyType, 0);
  if (settings.ProxyType == kNamedProxy) {
    settings.ProxyServer =
        GetProductSetting_String(false, section, std::string(names::kProxyServerSetting), "");
  }
  if (GetProductSetting_Boolean(false, section, std::string(names::kIsCustomUrlSetting), false)) {
    settings.Url =
        GetProductSetting_String(false, section, std::string(names::kCustomUrlSetting), "");
  }
  settings.NoFtp =
      GetProductSetting_Boolean(false, section, std::string(names::kNoFtpSetting), false);
}

UpdaterSettings ReadProductSettings() {
  UpdaterSettings settings;
  settings.IsClientInstallation = IsClientInstallation();
  const std::string root_path = MachineSetting(names::kRootPathSetting);
  if (!root_path.empty()) settings.IsNetworkInstallation = HasClientLists(root_path);
  ReadUpdateSettings(settings);
  settings.IsDefaultUrl = settings.Url.empty();
  if (settings.IsDefaultUrl) settings.Url = kPrimaryUrl;
  return settings;
}

// The parameters meant for the product are left out: they may hold what nobody else is to read.
void RecordStart(const UpdaterSettings& settings) {
  LogEvent("start", {{"program", ports::CurrentPorts().processes->OwnProgram()},
                     {"build", GetAppVersionString()},
                     {"system", GetOSInfoString()},
                     {"address", settings.Url},
                     {"installed", settings.OldProductVersion},
                     {"product", settings.MainExeFile},
                     {"temp_copy", settings.IsTempCopy},
                     {"restarted", settings.IsRestartedAfterSelfUpdate},
                     {"unattended", settings.NoFinalMessage},
                     {"client", settings.IsClientInstallation},
                     {"network", settings.IsNetworkInstallation},
                     {"proxy_type", settings.ProxyType},
                     {"proxy", settings.ProxyServer},
                     {"no_ftp", settings.NoFtp}});
}

// Returns the first argument that is not understood, if there is one. An option whose value is
// missing at the end of the line is ignored.
std::optional<std::string> ApplyArguments(const std::vector<std::string>& arguments,
                                          UpdaterSettings& settings) {
  const std::map<std::string_view, bool*> flags = {
      {names::kOptionNoFinalMessage, &settings.NoFinalMessage},
      {names::kOptionRestarted, &settings.IsRestartedAfterSelfUpdate},
      {names::kOptionNormalExit, &settings.UseNormalExit},
      {names::kOptionTempCopy, &settings.IsTempCopy},
      {names::kOptionElevated, &settings.IsElevated}};
  const std::map<std::string_view, std::string*> values = {
      {names::kOptionUrl, &settings.Url},
      {names::kOptionOldVersion, &settings.OldProductVersion},
      {names::kOptionMainExe, &settings.MainExeFile},
      {names::kOptionMainParams, &settings.MainExeParams}};
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string option = LowerCase(arguments[i]);
    if (const auto flag = flags.find(option); flag != flags.end()) {
      *flag->second = true;
      continue;
    }
    const auto value = values.find(option);
    if (value == values.end()) return arguments[i];
    if (i + 1 == arguments.size()) break;
    *value->second = arguments[++i];
    if (option == names::kOptionUrl) settings.IsDefaultUrl = false;
  }
  return std::nullopt;
}

void RefuseNetworkInstallation() {
  ShowInformation(box_titles::kWebUpdate, start_up_texts::kNetworkInstallation,
                  FailureKind::kNetworkInstallation);
  RunMainExeFile();
}

bool IsRollbackMarked() {
  const bool has_root = !MachineSetting(names::kRootPathSetting).empty() ||
                        ports::CurrentPorts().settings->HasFolderDefaults();
  return has_root && IsRollbackUnderWay();
}

// Nothing else may change the product now.
void OfferToFinishRollback() {
  const ports::Processes& processes = *ports::CurrentPorts().processes;
  const std::string name = std::string(names::kRollbackProgram) + processes.ProgramEnding();
  std::string program = JoinPath(JoinPath(GetProductRootPath(), names::kProgramFolder), name);
  if (!IsFileExists(program))
    program = JoinPath(SplitFileName(processes.OwnProgram()).Folder, name);
  if (!IsFileExists(program)) {
    ShowWarning(box_titles::kUpdateImpossible, start_up_texts::RollbackProgramMissing(program),
                FailureKind::kOwnFiles);
    return;
  }
  if (!AskQuestion(box_titles::kUpdateImpossible, start_up_texts::kRollbackUnfinished)) return;
  ReleaseUpdaterLock();
  RunProcess(program, Quoted(program) + " --finish", SplitFileName(program).Folder, false,
             kContinuesChain);
  SetRunOutcome(RunOutcome::kDone);
}

// Shows the progress window, which performs the run, and then the result.
void RunUpdate(const ProgressWindowFactory& make_progress_window) {
  const UpdaterSettings& settings = GetUpdaterSettings();
  bool updated = false;
  std::string new_version;
  {
    const std::unique_ptr<ProgressWindow> window = make_progress_window();
    window->Execute(std::string(names::kProductCode), settings.Url,
                    settings.IsDefaultUrl ? kFallbackUrl : "");
    updated = window->Updated();
    new_version = window->NewVersion();
  }
  if (updated) SetRunOutcome(RunOutcome::kDone);
  if (!settings.NoFinalMessage && updated) {
    ShowInformation(box_titles::kUpdaterProgram, start_up_texts::Updated(new_version));
  }
}

}  // namespace

void Main(const ProgressWindowFactory& make_progress_window) try {
  SetRunOutcome(RunOutcome::kBadCommandLine);
  if (!ParseCmdLine()) return;
  SetRunOutcome(RunOutcome::kRefused);
  if (GetUpdaterSettings().IsNetworkInstallation) {
    RefuseNetworkInstallation();
    return;
  }
  if (!WaitForOthersAndLock(MachineSetting(names::kRootPathSetting))) return;
  if (IsRollbackMarked()) {
    OfferToFinishRollback();
    return;
  }
  SetRunOutcome(RunOutcome::kFailed);
  if (make_progress_window) RunUpdate(make_progress_window);
  ReleaseUpdaterLock();
  RunMainExeFile();
} catch (...) {
  SetRunOutcome(RunOutcome::kFailed);
  ReportError(kModule, "Main");
}

bool ParseCmdLine() try {
  UpdaterSettings settings = ReadProductSettings();
  const auto unknown = ApplyArguments(ports::CurrentPorts().processes->OwnArgumentList(), settings);
  if (unknown) {
    CmdLineError(start_up_texts::UnknownOption(*unknown));
    return false;
  }
  RecordStart(settings);
  SetUpdaterSettings(std::move(settings));
  return true;
} catch (...) {
  ReRaiseError(kModule, "ParseCmdLine");
}

void CmdLineError(const std::string& message) try {
  ShowWarning(box_titles::kUpdaterProgram, start_up_texts::CommandLineError(message),
              FailureKind::kCommandLine);
} catch (...) {
  ReRaiseError(kModule, "CmdLineError");
}

void RunMainExeFile() try {
  std::string program = GetUpdaterSettings().MainExeFile;
  if (program.empty()) return;
  const SplitName parts = SplitFileName(program);
  if (parts.Extension.empty()) program += ports::CurrentPorts().processes->ProgramEnding();
  if (!IsFileExists(program)) return;
  const std::string& parameters = GetUpdaterSettings().MainExeParams;
  const std::string line = parameters.empty() ? "" : Quoted(program) + " " + parameters;
  RunProcess(program, line, parts.Folder, false, 0);
} catch (...) {
  ReRaiseError(kModule, "RunMainExeFile");
}

void ExitUpdater() try {
  ReleaseUpdaterLock();
  if (GetUpdaterSettings().UseNormalExit) std::exit(0);
  UnconditionallyTerminateApplication();
} catch (...) {
  ReRaiseError(kModule, "ExitUpdater");
}

void UnconditionallyTerminateApplication() try {
  const ports::Status status = ports::CurrentPorts().processes->Terminate(0);
  RaiseApiError(status.code);
} catch (...) {
  ReRaiseError(kModule, "UnconditionallyTerminateApplication");
}

}  // namespace tmw
