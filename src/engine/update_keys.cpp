#include "engine/update_keys.h"

#include <algorithm>

#include "engine/engine_texts.h"
#include "foundation/contract_names.h"
#include "ports/ports.h"
#include "ports/settings_store.h"
#include "services/product_settings.h"

#ifndef TMW_PUBLIC_KEYS
#define TMW_PUBLIC_KEYS ""
#endif

namespace tmw {
namespace {

constexpr std::string_view kSeparators = " \t\r\n,;";

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(kSeparators) == std::string_view::npos;
}

// Returns whether the setting is there but is no text: it must not pass for a missing one.
bool IsOfOtherType(ports::SettingsStore& store) {
  const auto machine = ports::SettingsRoot::kMachine;
  const std::string key =
      ConcatenateRegistryKeys(std::string(names::kProductKey), std::string(names::kGeneralSection));
  const std::string name(names::kUpdateKeysSetting);
  return store.Exists(machine, key, name) && !store.ReadString(machine, key, name).value;
}

}  // namespace

bool TryReadUpdateKeys(std::vector<signature::PublicKey>& keys, std::string& reason) {
  return TryReadUpdateKeys(TMW_PUBLIC_KEYS, keys, reason);
}

bool TryReadUpdateKeys(std::string_view built_in, std::vector<signature::PublicKey>& keys,
                       std::string& reason) {
  keys.clear();
  const std::string set = GetProductSetting_String(true, std::string(names::kGeneralSection),
                                                   std::string(names::kUpdateKeysSetting), "");
  const bool is_chosen_by_environment =
      ports::CurrentPorts().settings->IsChosenByEnvironment(ports::SettingsRoot::kMachine);
  const bool may_replace = IsBlank(built_in) || !is_chosen_by_environment;
  if (may_replace && IsOfOtherType(*ports::CurrentPorts().settings)) {
    reason = engine_texts::kKeysAreNoText;
    return false;
  }
  std::string_view rest = !IsBlank(set) && may_replace ? std::string_view(set) : built_in;
  while (!IsBlank(rest)) {
    rest.remove_prefix(rest.find_first_not_of(kSeparators));
    const std::string_view word =
        rest.substr(0, std::min(rest.size(), rest.find_first_of(kSeparators)));
    const auto key = signature::ParsePublicKey(word);
    if (!key) {
      reason = engine_texts::FaultyKey(std::string(word));
      keys.clear();
      return false;
    }
    keys.push_back(*key);
    rest.remove_prefix(word.size());
  }
  return true;
}

}  // namespace tmw
