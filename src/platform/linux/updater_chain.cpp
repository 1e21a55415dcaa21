#include "platform/linux/updater_chain.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/factories.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/exit_codes.h"

namespace platform {
namespace {

// A member becomes this process's child only once its starter has exited.
constexpr int kAdoptionAttempts = 400;
constexpr long kAdoptionPauseNanoseconds = 5'000'000;

UniqueDescriptor TakeOverPipe() {
  const char* const variable = std::getenv(kChainVariable);
  if (variable == nullptr) return {};
  const std::string_view text = variable;
  int number = -1;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  unsetenv(kChainVariable);
  struct stat facts {};
  if (read.ec != std::errc{} || number <= STDERR_FILENO || fstat(number, &facts) != 0 ||
      !S_ISFIFO(facts.st_mode))
    return {};
  fcntl(number, F_SETFD, FD_CLOEXEC);
  return UniqueDescriptor(number);
}

UniqueDescriptor& PipeSlot() {
  static UniqueDescriptor pipe = TakeOverPipe();
  return pipe;
}

// The member that does the work now; 0 when there is none.
volatile std::sig_atomic_t working_member = 0;

void HandOn(int number) {
  const int saved = errno;
  if (working_member != 0) kill(working_member, number);
  errno = saved;
}

// The terminal's keys reach the members directly, and they decide what to do. A signal sent to this
// process is meant for the member that is working and is forwarded; SIGHUP from a closing terminal
// reaches all of them, and receiving it twice does no harm.
void LeaveSignalsToMembers() {
  static_cast<void>(std::signal(SIGINT, SIG_IGN));
  static_cast<void>(std::signal(SIGQUIT, SIG_IGN));
  for (const int number : {SIGTERM, SIGHUP}) {
    struct sigaction action {};
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = HandOn;
    sigaction(number, &action, nullptr);
  }
}

// The terminal's modes at the start. A member that was killed has not restored them, and its
// successor may have found what it had set.
class TerminalModes {
 public:
  TerminalModes() : is_known_(tcgetattr(STDIN_FILENO, &modes_) == 0) {}
  void PutBack() const {
    if (is_known_ && tcgetpgrp(STDIN_FILENO) == getpgrp())
      tcsetattr(STDIN_FILENO, TCSANOW, &modes_);
  }

 private:
  termios modes_{};
  bool is_known_;
};

// Reads the ids of all members until the chain is over.
std::vector<pid_t> ReadMembers(int pipe, pid_t first) {
  std::vector<pid_t> members = {first};
  for (;;) {
    pid_t member = 0;
    const ssize_t count = read(pipe, &member, sizeof(member));
    if (count == static_cast<ssize_t>(sizeof(member))) {
      members.push_back(member);
      working_member = member;
    } else if (count >= 0 || errno != EINTR) {
      return members;
    }
  }
}

// Nothing for a member whose end was seen by another process alone.
std::optional<int> WaitForMember(pid_t member) {
  for (int attempt = 0; attempt < kAdoptionAttempts; ++attempt) {
    int status = 0;
    if (waitpid(member, &status, 0) == member) return ExitCodeOf(status);
    if (errno == EINTR) continue;
    if (kill(member, 0) != 0 && errno == ESRCH) return std::nullopt;
    const timespec pause{0, kAdoptionPauseNanoseconds};
    nanosleep(&pause, nullptr);
  }
  return std::nullopt;
}

// In a program started without them the first files to be opened would become input and output.
void OpenStandardDescriptors() {
  int descriptor = open("/dev/null", O_RDWR);
  while (descriptor >= 0 && descriptor <= STDERR_FILENO)
    descriptor = open("/dev/null", O_RDWR);
  if (descriptor >= 0) close(descriptor);
}

// Signals that arrive while one of these lives are delivered at its end.
class HeldSignals {
 public:
  HeldSignals() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &saved_);
  }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;
  ~HeldSignals() { sigprocmask(SIG_SETMASK, &saved_, nullptr); }

 private:
  sigset_t saved_{};
};

int WaitForChain(int pipe, pid_t first, const TerminalModes& modes) {
  const std::vector<pid_t> members = ReadMembers(pipe, first);
  working_member = 0;
  modes.PutBack();
  // The others ended with their restarts; what is not known of the last one is no success.
  return WaitForMember(members.back()).value_or(EXIT_FAILURE);
}

}  // namespace

int ChainPipe() {
  return PipeSlot().Get();
}

void AnnounceChainMember(pid_t member) {
  const int pipe = ChainPipe();
  if (pipe < 0) return;
  // If the waiting parent has been killed nobody reads, and SIGPIPE must not end the updater too.
  struct sigaction ignore {};
  struct sigaction saved {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &saved);
  // A write this short is atomic.
  while (write(pipe, &member, sizeof(member)) < 0 && errno == EINTR) {
  }
  sigaction(SIGPIPE, &saved, nullptr);
}

std::optional<int> WaitForUpdaterChain() {
  OpenStandardDescriptors();
  if (ChainPipe() >= 0) return std::nullopt;
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  UniqueDescriptor read_end(ends[0]);
  UniqueDescriptor write_end(ends[1]);
  // Members whose starter has ended become children of this process.
  if (prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0) return std::nullopt;
  const TerminalModes modes;
  // A key that is pressed right after the start must not end the waiting process before it leaves
  // the signals to the members.
  std::optional<HeldSignals> held(std::in_place);
  const pid_t first = fork();
  if (first == 0) {
    PipeSlot() = std::move(write_end);
    return std::nullopt;
  }
  if (first < 0) {
    // The run itself matters more than the wait for it.
    prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
    return std::nullopt;
  }
  write_end.Reset();
  working_member = first;
  LeaveSignalsToMembers();
  held.reset();
  return WaitForChain(read_end.Get(), first, modes);
}

}  // namespace platform
