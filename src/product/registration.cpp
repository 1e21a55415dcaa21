#include "product/registration.h"

#include <cstdint>

#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "packages/companion_functions.h"
#include "ports/companion_library.h"
#include "ports/ports.h"
#include "ports/system_info.h"
#include "product/product_texts.h"
#include "services/message_boxes.h"
#include "services/processes.h"
#include "services/product_settings.h"
#include "services/run_log.h"
#include "services/run_module.h"

namespace tmw {
namespace {

constexpr const char* kTool = "regsvr32.exe";

std::string FindTool() {
  const std::string windows = GetWindowsFolder();
  const std::string system = GetSystemFolder();
  if (windows.empty()) return {};
  for (const std::string& folder : {JoinPath(windows, "SysWOW64"), JoinPath(windows, "System32"),
                                    system, JoinPath(windows, "System"), windows}) {
    std::string candidate = JoinPath(folder, kTool);
    if (IsFileExists(candidate)) return candidate;
  }
  return {};
}

struct Direction {
  const char* tool_options;
  std::string (*missing)(const std::string& file);
  std::string (*failed)(const std::string& file, std::int32_t code, const std::string& reason);
  std::int32_t (COMPANION_CALL* ports::EntryPoints::*call)(const char* path);
};

constexpr Direction kRegister = {" -s ", product_texts::RegisteredFileMissing,
                                 product_texts::NotRegistered, &ports::EntryPoints::RegisterDll};
constexpr Direction kUnregister = {" -u -s ", product_texts::UnregisteredFileMissing,
                                   product_texts::NotUnregistered,
                                   &ports::EntryPoints::UnregisterDll};

bool TryChange(const Direction& direction, const std::string& file, std::string& reason) {
  if (!IsFileExists(file)) {
    reason = direction.missing(file);
    return false;
  }
  if (GetNoRegisteringParam()) return true;
  const std::string tool = GetRegSvr32FileName();
  if (!tool.empty() &&
      RunProcess("", Quoted(tool) + direction.tool_options + Quoted(file), "", true, 0) == 0) {
    return true;
  }
  const std::string name = ports::CurrentPorts().companion->NarrowPath(file);
  const std::int32_t code = (CompanionFunctions().*direction.call)(name.c_str());
  if (code == 0) return true;
  LogEvent("not_registered", {{"file", file}, {"code", code}});
  reason = direction.failed(file, code, GetApiErrorText(code, ""));
  return false;
}

bool Change(const Direction& direction, const std::string& file, bool is_quiet) {
  std::string reason;
  if (TryChange(direction, file, reason)) return true;
  if (!is_quiet) DownloadError(reason, FailureKind::kRegistration);
  return false;
}

}  // namespace

bool DoRegisterDll(const std::string& file, bool is_quiet) try {
  return Change(kRegister, file, is_quiet);
} catch (...) {
  ReRaiseError(kRunModule, "DoRegisterDll");
}

bool TryRegisterDll(const std::string& file, std::string& reason) {
  return TryChange(kRegister, file, reason);
}

bool UnregisterDll(const std::string& file, bool is_quiet) try {
  return Change(kUnregister, file, is_quiet);
} catch (...) {
  ReRaiseError(kRunModule, "UnregisterDll");
}

bool GetNoRegisteringParam() try {
  static const bool kValue = ReadRegistryBoolean(true, std::string(names::kDevelopmentKey),
                                                 std::string(names::kNoRegisteringSetting), false);
  return kValue;
} catch (...) {
  ReRaiseError("miUpdaterUtils", "GetNoRegisteringParam");
}

std::string GetRegSvr32FileName() try {
  static const std::string kFound = FindTool();
  return kFound;
} catch (...) {
  ReRaiseError(kRunModule, "GetRegSvr32FileName");
}

std::string GetWindowsFolder() try {
  return ports::CurrentPorts().system_info->Folders().windows;
} catch (...) {
  ReRaiseError(kRunModule, "GetWindowsFolder");
}

std::string GetSystemFolder() try {
  return ports::CurrentPorts().system_info->Folders().system;
} catch (...) {
  ReRaiseError(kRunModule, "GetSystemFolder");
}

}  // namespace tmw
