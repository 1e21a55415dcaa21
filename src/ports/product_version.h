#pragma once

#include <memory>
#include <optional>
#include <string>

namespace ports {

// The installed product's own word on its version.
class ProductVersion {
 public:
  virtual ~ProductVersion() = default;

  // A dotted version; nothing when the product's version component is not there.
  // Windows: property VersionEx of the COM object "Tm_Version.VersionInfo". Linux: the value of
  // that name in the class section of the machine's settings file,
  // [HKEY_CLASSES_ROOT\Tm_Version.VersionInfo].
  virtual std::optional<std::string> InstalledVersion() = 0;
};

}  // namespace ports
