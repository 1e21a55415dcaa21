#include <cstdint>
#include <span>
#include <string>

#include "engine/engine_texts.h"
#include "engine/ks_updater.h"
#include "engine/limits.h"
#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "ports/companion_library.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "services/processes.h"
#include "sha256/sha256.h"
#include "transfer/inet.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";
constexpr int kNumberedNames = 100;

ports::Processes& OwnProcess() {
  return *ports::CurrentPorts().processes;
}

// The options this process was started with come last, so that they survive the restart.
std::string RestartLine(const std::string& program, const std::string& own_options) {
  const std::string received = OwnProcess().OwnArguments();
  return Quoted(program) + own_options + (received.empty() ? "" : " " + received);
}

// A name in the folder under which nothing is left: a running program keeps its own name locked, so
// its successor gets the next number. Empty when there is none.
std::string FindFreeName(const std::string& folder, const std::string& name) {
  const SplitName parts = SplitFileName(name);
  for (int number = 0; number <= kNumberedNames; ++number) {
    const std::string suffix = number == 0 ? "" : "_" + std::to_string(number);
    const std::string candidate = JoinPath(folder, parts.Name + suffix + "." + parts.Extension);
    DeleteFile(candidate, true);
    if (!IsFileExists(candidate)) return candidate;
  }
  return {};
}

std::string CompanionFileName() {
  return SplitFileName(ports::CurrentPorts().companion->Path()).FileName();
}

bool IsProgram(const std::string& name) {
  return LowerCase(SplitFileName(name).Extension) == "exe";
}

std::string HashOf(const std::string& bytes) {
  return sha256::CSHA256().SHA256(
      std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

bool VerifyUpdaterComponent(const std::string& url, const WuUpdaterComponent& component) {
  const std::string& file = component.LocalFileName;
  if (!IsFileExists(file)) {
    DownloadError(engine_texts::ComponentNotLoaded(url));
    return false;
  }
  const std::int64_t length = GetFileLength(file);
  if (length != component.Size) {
    DownloadError(engine_texts::ComponentLengthDiffers(url, length, component.Size));
    return false;
  }
  if (HashOf(ReadFileBytes(file)) != component.Hash) {
    DownloadError(engine_texts::ComponentHashDiffers(url));
    return false;
  }
  return true;
}

}  // namespace

bool KsUpdater::CopyToTempFolderAndRestart() try {
  SetupProgress(0, false);
  SetMainAction(engine_texts::kCopyingUpdater);
  SetSubAction("");
  if (!CreateTempDir()) return false;
  const std::string program = SplitFileName(OwnProcess().OwnProgram()).FileName();
  std::string copied_program;
  std::string copied_library;
  if (!CopyModuleToTempFolder(JoinPath(".", program), copied_program) ||
      !CopyModuleToTempFolder(JoinPath(".", CompanionFileName()), copied_library)) {
    return false;
  }
  SetMainAction(engine_texts::kRestarting);
  SetSubAction("");
  const std::string version =
      old_product_version_.empty()
          ? ""
          : " " + std::string(names::kOptionOldVersion) + " " + old_product_version_;
  RunProcess(copied_program,
             RestartLine(copied_program, " " + std::string(names::kOptionTempCopy) + version),
             SplitFileName(copied_program).Folder, false, kContinuesChain);
  exit_updater_();
  return true;
} catch (...) {
  ReRaiseError(kModule, "CopyToTempFolderAndRestart");
}

bool KsUpdater::CopyModuleToTempFolder(const std::string& source, std::string& target) try {
  const std::string name = SplitFileName(source).FileName();
  SetSubAction("Файл " + name + "...");
  target = JoinPath(temp_dir_, name);
  if (!IsFileExists(source)) {
    DownloadError(engine_texts::OwnFileMissing(source));
    return false;
  }
  CopyFile(source, target);
  return true;
} catch (...) {
  ReRaiseError(kModule, "CopyModuleToTempFolder");
}

bool KsUpdater::DownloadUpdater() try {
  SetMainAction(engine_texts::kLoadingUpdater);
  for (WuUpdaterComponent& component : updater_components_) {
    if (!DownloadUpdaterComponent(component)) return false;
  }
  return true;
} catch (...) {
  ReRaiseError(kModule, "DownloadUpdater");
}

bool KsUpdater::DownloadUpdaterComponent(WuUpdaterComponent& component) {
  const std::string url = JoinUrl(loading_url_, component.Name);
  SetSubAction("Загрузка " + url + " ...");
  if (IsProgram(component.Name)) {
    component.LocalFileName = FindFreeName(temp_dir_, component.Name);
    if (component.LocalFileName.empty()) {
      DownloadError(engine_texts::NoFreeName(component.Name, temp_dir_));
      return false;
    }
  } else {
    component.LocalFileName = JoinPath(temp_dir_, component.Name);
    DeleteFileRepeatedly(component.LocalFileName);
  }
  if (!Fetch(url, component.LocalFileName, MaxComponent(component.Size))) return false;
  return !CancelPressed() && VerifyUpdaterComponent(url, component) && !CancelPressed();
}

bool KsUpdater::RestartUpdater() try {
  SetMainAction(engine_texts::kRestarting);
  const bool is_started = StartNewUpdater();
  SetMainAction("");
  SetSubAction("");
  return is_started;
} catch (...) {
  ReRaiseError(kModule, "RestartUpdater");
}

bool KsUpdater::StartNewUpdater() {
  if (updater_components_.empty()) {
    DownloadError(engine_texts::kNoComponents);
    return false;
  }
  const std::string& program = updater_components_.front().LocalFileName;
  const ports::Status status = ports::CurrentPorts().files->MakeExecutable(program);
  if (!status)
    RaiseApiErrorWithMessage("Ошибка подготовки программы " + Quoted(program) + ":", status.code);
  RunProcess(program, RestartLine(program, " " + std::string(names::kOptionRestarted)), "", false,
             kContinuesChain);
  exit_updater_();
  return true;
}

}  // namespace tmw
