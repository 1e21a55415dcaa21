#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ports/outcome.h"

namespace ports {

enum class SettingsRoot { kMachine, kUser, kClasses };

// A failure of the store. description is the Russian message where the store has more to say than a
// code, else empty: with code 0 the whole of it (a broken settings file: its name, line and fault),
// otherwise what to put on the line above the system's text.
struct SettingsError {
  SystemCode code = 0;
  std::string description;
};

// The value, nothing when key or value are not there (or are of another type), or the error.
template <typename T>
struct SettingsResult {
  std::optional<T> value;
  std::optional<SettingsError> error;
};

// The registry, for reading. Keys are written with "\" ("SOFTWARE\\Kestrel Soft\\Tamrin\\General");
// keys and names compare without regard to case, the empty name is the key's default value.
// Windows: the 32-bit view of the registry, from 64-bit programs too.
// Classes are HKEY_CLASSES_ROOT; on Linux they are a section of the machine's file.
// Linux: files in the registry editor's text format, read once per process: the machine's at
// /etc/tamrin/machine.reg (or $TAMRIN_MACHINE_REG), the user's at $XDG_CONFIG_HOME/tamrin/user.reg
// (or $TAMRIN_USER_REG). A missing file is an empty one.
class SettingsStore {
 public:
  virtual ~SettingsStore() = default;

  // String values (REG_SZ, REG_EXPAND_SZ unexpanded).
  virtual SettingsResult<std::string> ReadString(SettingsRoot root, const std::string& key,
                                                 const std::string& name) = 0;

  // Whether the product's folders have fixed defaults that hold when no setting names them
  // (Windows), or a setting must (Linux).
  virtual bool HasFolderDefaults() const = 0;

  // Double-word values.
  virtual SettingsResult<std::int32_t> ReadLong(SettingsRoot root, const std::string& key,
                                                const std::string& name) = 0;
};

}  // namespace ports
