#pragma once

#include <map>
#include <optional>
#include <string>

#include "foundation/encodings.h"
#include "ports/settings_store.h"

namespace tests {

// The registry as two maps; keys are written "key\\name" and compare without case. A failure, when
// set, is the answer to every question.
class MemorySettings final : public ports::SettingsStore {
 public:
  std::optional<ports::SystemCode> failure;
  std::string failure_text;
  bool has_folder_defaults = false;
  bool is_chosen_by_environment = false;

  void Set(ports::SettingsRoot root, const std::string& path, const std::string& value) {
    strings_[{root, tmw::LowerCase(path)}] = value;
  }
  void Set(ports::SettingsRoot root, const std::string& path, std::int32_t value) {
    longs_[{root, tmw::LowerCase(path)}] = value;
  }

  ports::Setting<std::string> ReadString(ports::SettingsRoot root, const std::string& key,
                                         const std::string& name) override {
    return Find(strings_, root, key, name);
  }
  bool Exists(ports::SettingsRoot root, const std::string& key, const std::string& name) override {
    return Find(strings_, root, key, name).value || Find(longs_, root, key, name).value;
  }
  std::string PlaceOf(ports::SettingsRoot /*root*/) override { return "файл \"m.reg\""; }
  bool HasFolderDefaults() const override { return has_folder_defaults; }
  bool IsChosenByEnvironment(ports::SettingsRoot /*root*/) const override {
    return is_chosen_by_environment;
  }
  ports::Setting<std::int32_t> ReadLong(ports::SettingsRoot root, const std::string& key,
                                        const std::string& name) override {
    return Find(longs_, root, key, name);
  }
  std::string FailureText(ports::SettingsRoot /*root*/) override { return failure_text; }

 private:
  using Key = std::pair<ports::SettingsRoot, std::string>;

  template <typename T>
  ports::Setting<T> Find(const std::map<Key, T>& values, ports::SettingsRoot root,
                         const std::string& key, const std::string& name) const {
    const auto found = values.find({root, tmw::LowerCase(key + "\\" + name)});
    if (failure) return ports::Setting<T>::Failure(*failure);
    return ports::Setting<T>::Success(found == values.end() ? std::nullopt
                                                            : std::optional<T>(found->second));
  }

  std::map<Key, std::string> strings_;
  std::map<Key, std::int32_t> longs_;
};

}  // namespace tests
