#pragma once

#include <map>
#include <optional>
#include <string>

#include "foundation/encodings.h"
#include "ports/settings_store.h"

namespace tests {

// The registry as two maps; keys are written "key\\name" and compare without case. An error, when
// set, is the answer to every question.
class MemorySettings final : public ports::SettingsStore {
 public:
  std::optional<ports::SettingsError> error;
  bool has_folder_defaults = false;

  void Set(ports::SettingsRoot root, const std::string& path, const std::string& value) {
    strings_[{root, tmw::LowerCase(path)}] = value;
  }
  void Set(ports::SettingsRoot root, const std::string& path, std::int32_t value) {
    longs_[{root, tmw::LowerCase(path)}] = value;
  }

  ports::SettingsResult<std::string> ReadString(ports::SettingsRoot root, const std::string& key,
                                                const std::string& name) override {
    return Find(strings_, root, key, name);
  }
  bool HasFolderDefaults() const override { return has_folder_defaults; }
  ports::SettingsResult<std::int32_t> ReadLong(ports::SettingsRoot root, const std::string& key,
                                               const std::string& name) override {
    return Find(longs_, root, key, name);
  }

 private:
  using Key = std::pair<ports::SettingsRoot, std::string>;

  template <typename T>
  ports::SettingsResult<T> Find(const std::map<Key, T>& values, ports::SettingsRoot root,
                                const std::string& key, const std::string& name) const {
    const auto found = values.find({root, tmw::LowerCase(key + "\\" + name)});
    if (error || found == values.end()) return {std::nullopt, error};
    return {found->second, std::nullopt};
  }

  std::map<Key, std::string> strings_;
  std::map<Key, std::int32_t> longs_;
};

}  // namespace tests
