#include "engine/virtual_copies.h"

#include <string>

#include "database/database_paths.h"
#include "engine/engine_texts.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "ports/settings_store.h"
#include "services/message_boxes.h"
#include "services/product_settings.h"

namespace tmw {
namespace {

constexpr const char* kMachineCopies = "Software\\Classes\\VirtualStore\\MACHINE\\";
constexpr const char* k32BitSoftware = "SOFTWARE\\WOW6432Node\\";
constexpr const char* kSoftware = "SOFTWARE\\";

bool IsSettingThere(const std::string& key, std::string_view name) {
  const auto read = ports::CurrentPorts().settings->ReadString(ports::SettingsRoot::kUser, key,
                                                               std::string(name));
  return read && read.value.has_value();
}

}  // namespace

bool HasNoVirtualCopies(bool is_client) {
  const std::string file = is_client ? "" : UserDatabasePlace();
  const std::string copy = is_client ? "" : ports::CurrentPorts().files->VirtualCopyOf(file);
  if (!copy.empty() && IsFileExists(copy)) {
    DownloadError(engine_texts::TwoDatabases(file, copy), FailureKind::kDatabase);
    return false;
  }
  const std::string key =
      ConcatenateRegistryKeys(std::string(names::kProductKey), std::string(names::kGeneralSection));
  const std::string tail = key.substr(std::string_view(kSoftware).size());
  for (const char* const software : {kSoftware, k32BitSoftware}) {
    const std::string copied = kMachineCopies + (software + tail);
    for (const auto name : {names::kRootPathSetting, names::kDataBasePathSetting}) {
      if (!IsSettingThere(copied, name)) continue;
      DownloadError(
          engine_texts::TwoSettings("HKEY_LOCAL_MACHINE\\" + key, "HKEY_CURRENT_USER\\" + copied),
          FailureKind::kSetting);
      return false;
    }
  }
  return true;
}

}  // namespace tmw
