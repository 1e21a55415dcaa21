#include "services/updater_events.h"

#include "foundation/error_handling.h"
#include "services/run_module.h"

namespace tmw {

bool UpdaterEvents::CancelPressed() try {
  bool cancel = false;
  OnCheckCancelPressed(cancel);
  return cancel;
} catch (...) {
  ReRaiseError(kRunModule, "CancelPressed");
}

void UpdaterEvents::ClearProgress() {
  OnSetMainAction("");
  OnSetSubAction("");
  OnSetComponent("");
  OnSetupProgress(0, false);
}

}  // namespace tmw
