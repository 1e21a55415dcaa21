#include "engine/product_version_check.h"

#include <cstdint>

#include "engine/engine_texts.h"
#include "engine/run_messages.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/version.h"
#include "ports/ports.h"
#include "ports/product_version.h"
#include "product/interruption_mark.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "services/run_module.h"
#include "services/run_outcome.h"

namespace tmw {
namespace {

constexpr std::int32_t kNotComparable = -2;

bool Compare(const std::string& installed, const std::string& offered,
             const std::string& temp_dir) {
  switch (CompareVersionStrings(installed, offered, kNotComparable)) {
    case -1:
      return true;
    case 0:
      // The file that holds the version may have been installed before the interruption.
      if (IsInstallationInterrupted(temp_dir) || AskForRepair(installed)) return true;
      // Of releases that nobody installs any more.
      DeleteFolderTree(temp_dir);
      return false;
    case 1:
      SetRunOutcome(RunOutcome::kRefused);
      ShowInformation(box_titles::kUpdateImpossible,
                      engine_texts::InstalledIsNewer(installed, offered), FailureKind::kVersions);
      return false;
    default:
      DownloadError(engine_texts::VersionsNotComparable(installed, offered),
                    FailureKind::kVersions);
      return false;
  }
}

}  // namespace

std::string LoadOldProductVersion() try {
  return ports::CurrentPorts().product_version->InstalledVersion().value_or("");
} catch (...) {
  ReRaiseError(kRunModule, "LoadOldProductVersion");
}

bool CheckProductVersion(const std::string& installed, const std::string& offered,
                         const std::string& temp_dir, UpdaterEvents& events) {
  if (installed.empty()) return true;
  events.OnSetMainAction(engine_texts::kComparingVersions);
  const bool result = Compare(installed, offered, temp_dir);
  events.OnSetMainAction("");
  return result;
}

}  // namespace tmw
