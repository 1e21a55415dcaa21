#include "platform/factories.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "foundation/unique_handle.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "platform/windows/windows_texts.h"
#include "ports/settings_store.h"

namespace platform {
namespace {

struct RegistryKeyTraits {
  using Type = HKEY;
  static Type Invalid() { return nullptr; }
  static void Close(Type key) { RegCloseKey(key); }
};
using RegistryKey = tmw::UniqueHandle<RegistryKeyTraits>;

struct RawValue {
  DWORD type = REG_NONE;
  std::vector<BYTE> bytes;
};

ports::Setting<RawValue> FromCode(LSTATUS code) {
  if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND) return {};
  return ports::Setting<RawValue>::Failure(static_cast<ports::SystemCode>(code));
}

HKEY HandleOf(ports::SettingsRoot root) {
  switch (root) {
    case ports::SettingsRoot::kMachine:
      return HKEY_LOCAL_MACHINE;
    case ports::SettingsRoot::kClasses:
      return HKEY_CLASSES_ROOT;
    case ports::SettingsRoot::kUser:
      break;
  }
  return HKEY_CURRENT_USER;
}

ports::Setting<RawValue> ReadRaw(ports::SettingsRoot root, const std::string& key,
                                 const std::string& name) {
  HKEY opened = nullptr;
  LSTATUS code = RegOpenKeyExW(HandleOf(root), ToWide(key).c_str(), 0,
                               KEY_QUERY_VALUE | KEY_WOW64_32KEY, &opened);
  if (code != ERROR_SUCCESS) return FromCode(code);
  const RegistryKey owner(opened);
  const std::wstring wide_name = ToWide(name);
  RawValue value;
  DWORD length = 0;
  do {  // another program may lengthen the value between the two calls
    value.bytes.resize(length);
    code = RegQueryValueExW(opened, wide_name.c_str(), nullptr, &value.type,
                            length == 0 ? nullptr : value.bytes.data(), &length);
  } while (code == ERROR_MORE_DATA || (code == ERROR_SUCCESS && value.bytes.size() < length));
  if (code != ERROR_SUCCESS) return FromCode(code);
  value.bytes.resize(length);
  return ports::Setting<RawValue>::Success(std::move(value));
}

// A text whose variables cannot be filled in stays as it is.
std::string Expanded(const std::string& text) {
  const std::wstring wide = ToWide(text);
  std::wstring expanded(ExpandEnvironmentStringsW(wide.c_str(), nullptr, 0), L'\0');
  const DWORD length =
      ExpandEnvironmentStringsW(wide.c_str(), expanded.data(), static_cast<DWORD>(expanded.size()));
  if (length == 0 || length > expanded.size()) return text;
  return FromWide({expanded.data(), length - 1});
}

class WindowsSettingsStore final : public ports::SettingsStore {
 public:
  ports::Setting<std::string> ReadString(ports::SettingsRoot root, const std::string& key,
                                         const std::string& name) override {
    const auto raw = ReadRaw(root, key, name);
    if (!raw.value || (raw.value->type != REG_SZ && raw.value->type != REG_EXPAND_SZ))
      return {raw.ok, raw.code, std::nullopt};
    const auto& bytes = raw.value->bytes;
    std::string text = tmw::Utf16ToUtf8(
        tmw::BytesToUtf16({reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
    text.erase(std::min(text.find('\0'), text.size()));
    if (raw.value->type == REG_EXPAND_SZ) text = Expanded(text);
    return ports::Setting<std::string>::Success(std::move(text));
  }

  bool Exists(ports::SettingsRoot root, const std::string& key, const std::string& name) override {
    return ReadRaw(root, key, name).value.has_value();
  }

  ports::Setting<std::int32_t> ReadLong(ports::SettingsRoot root, const std::string& key,
                                        const std::string& name) override {
    const auto raw = ReadRaw(root, key, name);
    if (!raw.value || raw.value->type != REG_DWORD ||
        raw.value->bytes.size() != sizeof(std::int32_t))
      return {raw.ok, raw.code, std::nullopt};
    std::int32_t number = 0;
    std::memcpy(&number, raw.value->bytes.data(), sizeof(number));
    return ports::Setting<std::int32_t>::Success(number);
  }

  std::string FailureText(ports::SettingsRoot /*root*/) override { return {}; }

  bool IsChosenByEnvironment(ports::SettingsRoot /*root*/) const override { return false; }

  std::string PlaceOf(ports::SettingsRoot root) override {
    switch (root) {
      case ports::SettingsRoot::kMachine:
        return windows_texts::RegistryPlace("HKEY_LOCAL_MACHINE");
      case ports::SettingsRoot::kClasses:
        return windows_texts::RegistryPlace("HKEY_CLASSES_ROOT");
      case ports::SettingsRoot::kUser:
        break;
    }
    return windows_texts::RegistryPlace("HKEY_CURRENT_USER");
  }

  bool HasFolderDefaults() const override { return true; }
};

}  // namespace

std::unique_ptr<ports::SettingsStore> MakeSettingsStore() {
  return std::make_unique<WindowsSettingsStore>();
}

}  // namespace platform
