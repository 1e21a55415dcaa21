#include "services/product_settings.h"

#include <string_view>

#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "ports/settings_store.h"
#include "services/advice.h"
#include "services/services_texts.h"

namespace tmw {
namespace {

constexpr const char* kModule = "mTmRegistryParams";
constexpr const char* kMissingMark = "*";

struct PathCaches {
  std::string data_base_path;
  std::string root_path;
};

PathCaches& Caches() {
  static PathCaches caches;
  return caches;
}

ports::SettingsStore& Store() {
  return *ports::CurrentPorts().settings;
}

ports::SettingsRoot RootOf(bool machine_wide) {
  return machine_wide ? ports::SettingsRoot::kMachine : ports::SettingsRoot::kUser;
}

std::string SectionKey(const std::string& section) {
  return ConcatenateRegistryKeys(std::string(names::kProductKey), section);
}

template <typename T>
T ValueOr(const ports::Setting<T>& setting, bool machine_wide, const std::string& key,
          const std::string& name, const T& default_value) {
  if (setting) return setting.value.value_or(default_value);
  const std::string text = Store().FailureText(RootOf(machine_wide));
  if (setting.code == 0 && !text.empty()) RaiseProgramError(text);
  RaiseApiErrorWithMessage(
      text.empty() ? services_texts::ReadingSettingFailed(ConcatenateRegistryKeys(key, name))
                   : text,
      setting.code);
}

std::string ReadString(bool machine_wide, const std::string& key, const std::string& name,
                       const std::string& default_value) {
  return ValueOr(Store().ReadString(RootOf(machine_wide), key, name), machine_wide, key, name,
                 default_value);
}

std::string ReadFolder(std::string_view setting, std::string_view default_value) {
  const std::string section(names::kGeneralSection);
  const std::string name(setting);
  const bool has_default = Store().HasFolderDefaults();
  std::string folder = GetProductSetting_String(
      true, section, name, has_default ? std::string(default_value) : std::string());
  if (folder.empty()) {
    NoteFailure(FailureKind::kSetting);
    RaiseProgramError(
        services_texts::MissingSetting(ConcatenateRegistryKeys(SectionKey(section), name),
                                       Store().PlaceOf(ports::SettingsRoot::kMachine)));
  }
  const char separator = ports::CurrentPorts().files->Separator();
  if (!folder.ends_with(separator)) folder.push_back(separator);
  return folder;
}

}  // namespace

std::string ConcatenateRegistryKeys(const std::string& key, const std::string& sub_key) try {
  if (sub_key.empty()) return key;
  std::string_view front = key;
  std::string_view back = sub_key;
  if (front.ends_with('\\')) front.remove_suffix(1);
  if (back.starts_with('\\')) back.remove_prefix(1);
  return std::string(front) + "\\" + std::string(back);
} catch (...) {
  ReRaiseError(kModule, "ConcatenateRegistryKeys");
}

std::string GetProductSetting_String(bool machine_wide, const std::string& section,
                                     const std::string& name,
                                     const std::string& default_value) try {
  return ReadString(machine_wide, SectionKey(section), name, default_value);
} catch (...) {
  ReRaiseError(kModule, "GetProductSetting_String");
}

std::int32_t GetProductSetting_Long(bool machine_wide, const std::string& section,
                                    const std::string& name, std::int32_t default_value) try {
  const std::string key = SectionKey(section);
  return ValueOr(Store().ReadLong(RootOf(machine_wide), key, name), machine_wide, key, name,
                 default_value);
} catch (...) {
  ReRaiseError(kModule, "GetProductSetting_Long");
}

std::int32_t GetProductSetting_LongRanged(bool machine_wide, const std::string& section,
                                          const std::string& name, std::int32_t min,
                                          std::int32_t max, std::int32_t default_value) try {
  const std::int32_t value = GetProductSetting_Long(machine_wide, section, name, default_value);
  return min <= value && value <= max ? value : default_value;
} catch (...) {
  ReRaiseError(kModule, "GetProductSetting_LongRanged");
}

bool GetProductSetting_Boolean(bool machine_wide, const std::string& section,
                               const std::string& name, bool default_value) try {
  return ReadRegistryBoolean(machine_wide, SectionKey(section), name, default_value);
} catch (...) {
  ReRaiseError(kModule, "GetProductSetting_Boolean");
}

bool ReadRegistryBoolean(bool machine_wide, const std::string& key, const std::string& name,
                         bool default_value) {
  const std::string word = LowerCase(ReadString(machine_wide, key, name, kMissingMark));
  for (const std::string_view yes : {"true", "1", "-1", "yes", "y"}) {
    if (word == yes) return true;
  }
  for (const std::string_view no : {"false", "0", "no", "n"}) {
    if (word == no) return false;
  }
  return default_value;  // the mark of a missing value included
}

std::string GetDataBasePath() try {
  std::string& cache = Caches().data_base_path;
  if (cache.empty()) cache = ReadFolder(names::kDataBasePathSetting, "");
  return cache;
} catch (...) {
  ReRaiseError(kModule, "GetDataBasePath");
}

std::string GetProductRootPath() try {
  std::string& cache = Caches().root_path;
  if (cache.empty()) cache = ReadFolder(names::kRootPathSetting, names::kDefaultRootPath);
  return cache;
} catch (...) {
  ReRaiseError(kModule, "GetProductRootPath");
}

void ForgetProductPaths() {
  Caches() = {};
}

}  // namespace tmw
