#include "tools/stop.h"

#include <atomic>
#include <csignal>

#include "foundation/program_error.h"
#include "tools/tools_texts.h"

namespace tools {
namespace {

std::atomic<bool> is_stop_wanted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

void Stop(int number) {
  is_stop_wanted = true;
  static_cast<void>(std::signal(number, SIG_DFL));
}

}  // namespace

void ListenForStop() {
  for (const int number : {SIGINT, SIGTERM}) {
    // A program in the background is started with them ignored: Ctrl+C at the terminal is not
    // meant for it.
    if (std::signal(number, Stop) == SIG_IGN) static_cast<void>(std::signal(number, SIG_IGN));
  }
}

bool IsStopped() {
  return is_stop_wanted;
}

void ThrowIfStopped() {
  if (is_stop_wanted) tmw::RaiseProgramError(texts::kStopped);
}

}  // namespace tools
