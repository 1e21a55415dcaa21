#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ports/outcome.h"

namespace ports {

enum class SettingsRoot { kMachine, kUser, kClasses };

// The value; nothing when key or value are not there, or of another type.
template <typename T>
using Setting = Outcome<std::optional<T>>;

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

  // String values (REG_SZ; REG_EXPAND_SZ with its variables filled in, which Linux leaves alone).
  virtual Setting<std::string> ReadString(SettingsRoot root, const std::string& key,
                                          const std::string& name) = 0;

  // Whether the value is there, of whatever type. False if that cannot be read.
  virtual bool Exists(SettingsRoot root, const std::string& key, const std::string& name) = 0;

  // Whether the product's folders have fixed defaults that hold when no setting names them
  // (Windows), or a setting must (Linux).
  virtual bool HasFolderDefaults() const = 0;

  // Whether a variable of the environment says where the settings of that root stand (Linux): who
  // starts the program may then set anything.
  virtual bool IsChosenByEnvironment(SettingsRoot root) const = 0;

  // Double-word values.
  virtual Setting<std::int32_t> ReadLong(SettingsRoot root, const std::string& key,
                                         const std::string& name) = 0;

  // Where values of that root are set, in Russian and in the nominative: "файл …" with its path, or
  // the part of the registry.
  virtual std::string PlaceOf(SettingsRoot root) = 0;

  // The Russian message for failures under that root where the store has more to say than a code,
  // else empty. After code 0 it is the whole message (a broken settings file: its name, line and
  // fault), after another one the line above the system's text.
  virtual std::string FailureText(SettingsRoot root) = 0;
};

}  // namespace ports
