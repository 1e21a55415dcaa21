#include "ui/progress_lines.h"

#include <iostream>

#include "engine/ks_updater.h"
#include "foundation/error_handling.h"
#include "foundation/program_error.h"
#include "platform/front_end.h"
#include "platform/ports.h"
#include "startup/services/updater_settings.h"

namespace tmw {
namespace {

constexpr const char* kModule = "ProgressLines";

}  // namespace

void ProgressLines::Execute(const std::string& product_code, const std::string& url,
                            const std::string& fallback_url) try {
  KsUpdater updater(*this, exit_updater_);
  updater.SetOldProductVersion(GetUpdaterSettings().OldProductVersion);
  updater.Execute(product_code, url, fallback_url, updated_);
  new_version_ = updater.NewVersion();
} catch (...) {
  updated_ = false;
  const ProgramError error = CurrentError();
  if (error.Number == kProgramErrorNumber) {
    // Meant for the user as it stands.
    DownloadError(error.Description);
  } else {
    ReportError(kModule, "Execute");
  }
}

void ProgressLines::OnSetMainAction(const std::string& text) {
  if (!text.empty()) std::cout << text << std::endl;
}

void ProgressLines::OnCheckCancelPressed(bool& /*cancel*/) {
  platform::CurrentPorts().front_end->RunPendingEvents();
}

}  // namespace tmw
