#pragma once

namespace tmw {

// How an updater ends, as its exit code. Of a chain of restarts the last process counts.
enum class RunOutcome : int {
  kDone = 0,            // updated, nothing to do, or the repair of the same version declined
  kFailed = 1,          // reported to the user
  kBadCommandLine = 2,  // likewise
  kRefused = 3,         // this installation is not updated from here, or the user did not want to
};

namespace detail {
inline RunOutcome& OutcomeSlot() {
  static RunOutcome outcome = RunOutcome::kFailed;
  return outcome;
}
}  // namespace detail

// The one process-wide outcome; a failure unless a run says otherwise.
inline RunOutcome GetRunOutcome() {
  return detail::OutcomeSlot();
}

inline void SetRunOutcome(RunOutcome outcome) {
  detail::OutcomeSlot() = outcome;
}

}  // namespace tmw
