#include "platform/factories.h"

#include "ports/product_version.h"
#include "ports/settings_store.h"

namespace platform {
namespace {

class LinuxProductVersion final : public ports::ProductVersion {
 public:
  std::optional<std::string> InstalledVersion() override {
    // A store of its own: the file may have been written since this process read its settings.
    return MakeSettingsStore()
        ->ReadString(ports::SettingsRoot::kClasses, "Tm_Version.VersionInfo", "VersionEx")
        .value;
  }
};

}  // namespace

std::unique_ptr<ports::ProductVersion> MakeProductVersion() {
  return std::make_unique<LinuxProductVersion>();
}

}  // namespace platform
