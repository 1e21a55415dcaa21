#include "platform/linux/terminal_signals.h"

#include <poll.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigaction is POSIX

#include <array>
#include <cerrno>

namespace platform {
namespace {

constexpr std::array kStops = {SIGTERM, SIGHUP, SIGQUIT};

// The handler only increments its counters; what Take has reported is counted separately.
struct Counts {
  volatile std::sig_atomic_t interrupts = 0;
  volatile std::sig_atomic_t stops = 0;
  volatile std::sig_atomic_t resizes = 0;
  volatile std::sig_atomic_t continuations = 0;
};

Counts come;
Counts taken;

void Count(int number) {
  switch (number) {
    case SIGINT:
      come.interrupts = come.interrupts + 1;
      break;
    case SIGWINCH:
      come.resizes = come.resizes + 1;
      break;
    case SIGCONT:
      come.continuations = come.continuations + 1;
      break;
    default:
      come.stops = come.stops + 1;
  }
}

int TakeCount(const volatile std::sig_atomic_t& count, volatile std::sig_atomic_t& count_taken) {
  const int now = count;
  const int before = count_taken;
  count_taken = now;
  return now - before;
}

bool HasEndings() {
  return come.interrupts != taken.interrupts || come.stops != taken.stops;
}

sigset_t Endings() {
  sigset_t endings{};
  sigemptyset(&endings);
  sigaddset(&endings, SIGINT);
  for (const int number : kStops)
    sigaddset(&endings, number);
  return endings;
}

}  // namespace

TerminalSignals::TerminalSignals() {
  struct sigaction count {};
  count.sa_handler = Count;
  count.sa_flags = SA_RESTART;  // waits and reads elsewhere must not fail because of it
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGWINCH, SIGCONT}) {
    struct sigaction before {};
    sigaction(number, nullptr, &before);
    if (before.sa_handler == SIG_IGN) continue;
    saved_[number] = before;
    sigaction(number, &count, nullptr);
  }
}

TerminalSignals::~TerminalSignals() {
  for (const auto& [number, action] : saved_)
    sigaction(number, &action, nullptr);
  Take();
}

bool TerminalSignals::HasNews() const {
  return HasEndings() || come.resizes != taken.resizes || come.continuations != taken.continuations;
}

TerminalSignals::News TerminalSignals::Take() {
  News news;
  news.interrupts = TakeCount(come.interrupts, taken.interrupts);
  news.is_stop = TakeCount(come.stops, taken.stops) != 0;
  news.is_resized = TakeCount(come.resizes, taken.resizes) != 0;
  news.is_continued = TakeCount(come.continuations, taken.continuations) != 0;
  return news;
}

bool WaitForInput(int descriptor) {
  // Blocked except during the wait: a signal between check and wait would not end the wait.
  const sigset_t endings = Endings();
  sigset_t saved{};
  pthread_sigmask(SIG_BLOCK, &endings, &saved);
  bool is_readable = false;
  while (!is_readable && !HasEndings()) {
    pollfd input{descriptor, POLLIN, 0};
    const int count = ppoll(&input, 1, nullptr, &saved);
    if (count < 0 && errno != EINTR) break;
    is_readable = count > 0;
  }
  pthread_sigmask(SIG_SETMASK, &saved, nullptr);
  return is_readable;
}

}  // namespace platform
