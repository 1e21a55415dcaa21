#include "engine/engine_texts.h"
#include "engine/interruption_mark.h"
#include "engine/ks_updater.h"
#include "engine/updater_utils.h"
#include "foundation/error_handling.h"
#include "foundation/version.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "ports/product_version.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";
constexpr std::int32_t kNotComparable = -2;

}  // namespace

std::string KsUpdater::LoadOldProductVersion() try {
  return ports::CurrentPorts().product_version->InstalledVersion().value_or("");
} catch (...) {
  ReRaiseError(kModule, "LoadOldProductVersion");
}

bool KsUpdater::CheckProductVersion() try {
  if (old_product_version_.empty()) return true;
  SetMainAction(engine_texts::kComparingVersions);
  const bool result = CompareProductVersions();
  SetMainAction("");
  return result;
} catch (...) {
  ReRaiseError(kModule, "CheckProductVersion");
}

bool KsUpdater::CompareProductVersions() {
  ports::FrontEnd& front_end = *ports::CurrentPorts().front_end;
  switch (CompareVersionStrings(old_product_version_, new_version_, kNotComparable)) {
    case -1:
      return true;
    case 0:
      // The files, the version's own among them, may be all that has been installed.
      if (IsInstallationInterrupted(temp_dir_)) return true;
      // Asked in an unattended run too: a repair is nothing that goes without saying.
      return front_end.AskYesNo(engine_texts::kNotNeededTitle,
                                engine_texts::SameVersionQuestion(old_product_version_));
    case 1:
      front_end.ShowMessage(ports::MessageKind::kInformation, engine_texts::kImpossibleTitle,
                            engine_texts::InstalledIsNewer(old_product_version_, new_version_));
      return false;
    default:
      DownloadError(engine_texts::VersionsNotComparable(old_product_version_, new_version_));
      return false;
  }
}

}  // namespace tmw
