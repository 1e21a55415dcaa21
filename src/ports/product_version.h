#pragma once

#include <memory>
#include <optional>
#include <string>

namespace ports {

// The version that the installed product reports.
class ProductVersion {
 public:
  virtual ~ProductVersion() = default;

  // A dotted version; nothing if the product's version component is missing. Windows: property
  // VersionEx of the COM object "Tm_Version.VersionInfo". Linux: the value of that name in the
  // class section of the machine's settings file, [HKEY_CLASSES_ROOT\Tm_Version.VersionInfo].
  virtual std::optional<std::string> InstalledVersion() = 0;
};

}  // namespace ports
