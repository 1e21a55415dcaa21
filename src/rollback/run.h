#pragma once

#include <functional>

#include "rollback/decision.h"
#include "services/run_outcome.h"
#include "services/updater_events.h"

namespace rollback {

// Brings the previous version back, or finishes what an interrupted rollback has left. Everything
// that fails is shown; what is unexpected is raised. on_denied is called if this user lacks rights;
// it may end the process.
//
// From the first change until everything is back the product's root holds a mark. The order: the
// books are unpacked and checked beside the present ones; the product's files are exchanged, then
// the books, then components are registered and the release's own files removed; the reference
// database and the scripts follow, and last the updater and this program.
tmw::RunOutcome BringBack(const Wishes& wishes, tmw::UpdaterEvents& events,
                          const std::function<void()>& on_denied = {});

// Verifies what is kept and says what would be done, without changing anything.
tmw::RunOutcome Rehearse(const Wishes& wishes, tmw::UpdaterEvents& events, std::string& report);

}  // namespace rollback
