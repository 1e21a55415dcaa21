#include "platform/linux/terminal/terminal.h"

#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigtimedwait is POSIX
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "platform/linux/terminal/terminal_text.h"
#include "platform/linux/terminal_signals.h"

namespace platform {
namespace {

constexpr char kInterrupt = '\x03';  // Ctrl+C
constexpr const char* kInside = "UTF-8";

// Blocks the signals that writing may raise for the duration of a scope: neither a closed pipe nor
// a terminal that belongs to another program may end or stop an update.
class WithoutOutputSignals {
 public:
  WithoutOutputSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGPIPE);
    sigset_t pending{};
    sigpending(&pending);
    was_pending_ = sigismember(&pending, SIGPIPE) == 1;
    sigset_t blocked = signals_;
    sigaddset(&blocked, SIGTTOU);
    pthread_sigmask(SIG_BLOCK, &blocked, &saved_);
  }
  WithoutOutputSignals(const WithoutOutputSignals&) = delete;
  WithoutOutputSignals& operator=(const WithoutOutputSignals&) = delete;
  ~WithoutOutputSignals() {
    const timespec at_once{};
    if (!was_pending_) sigtimedwait(&signals_, nullptr, &at_once);
    pthread_sigmask(SIG_SETMASK, &saved_, nullptr);
  }

 private:
  sigset_t signals_{};
  sigset_t saved_{};
  bool was_pending_ = false;
};

void WriteAll(int stream, std::string_view bytes) {
  const WithoutOutputSignals guard;
  while (!bytes.empty()) {
    const ssize_t written = write(stream, bytes.data(), bytes.size());
    if (written > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || errno != EINTR) {
      return;
    }
  }
}

bool IsForegroundOf(int stream) {
  // -1 for a terminal without that capability.
  const pid_t foreground = tcgetpgrp(stream);
  return foreground == -1 || foreground == getpgrp();
}

// A reader at the end of a pipe may write to the same terminal.
bool IsPipe(int stream) {
  struct stat facts {};
  return fstat(stream, &facts) == 0 && (S_ISFIFO(facts.st_mode) || S_ISSOCK(facts.st_mode));
}

bool CanMoveCursor() {
  const char* const type = std::getenv("TERM");
  const std::string_view name = type == nullptr ? "" : type;
  return isatty(STDERR_FILENO) != 0 && !IsPipe(STDOUT_FILENO) && !name.empty() && name != "dumb";
}

}  // namespace

// Typed characters are not echoed for the duration of a scope.
class InputModes {
 public:
  // With keys: Ctrl+C is a character that ends the line, so that it cannot end the program with the
  // echo switched off.
  explicit InputModes(bool with_keys) {
    if (!IsForegroundOf(STDIN_FILENO) || tcgetattr(STDIN_FILENO, &saved_) != 0) return;
    termios hidden = saved_;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    if (with_keys) {
      hidden.c_lflag &= ~static_cast<tcflag_t>(ISIG);
      hidden.c_cc[VEOL] = kInterrupt;
    }
    is_changed_ = Set(hidden);
  }
  InputModes(const InputModes&) = delete;
  InputModes& operator=(const InputModes&) = delete;
  // In the background the shell has set the modes for itself.
  ~InputModes() {
    if (is_changed_ && IsForegroundOf(STDIN_FILENO)) Set(saved_);
  }

 private:
  static bool Set(const termios& modes) {
    const WithoutOutputSignals guard;
    return tcsetattr(STDIN_FILENO, TCSANOW, &modes) == 0;
  }

  termios saved_{};
  bool is_changed_ = false;
};

Terminal::Terminal() : encoding_(EncodingOfLocale()), has_cursor_(CanMoveCursor()) {}

Terminal::~Terminal() = default;

bool Terminal::CanAnswer() const {
  // Reading in the background would stop the process.
  return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0 && IsForegroundOf(STDIN_FILENO);
}

bool Terminal::IsForeground() const {
  return IsForegroundOf(STDERR_FILENO);
}

bool Terminal::IsOutputSeen() const {
  return isatty(STDOUT_FILENO) != 0;
}

TerminalSize Terminal::Size() const {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
    return {};
  return {size.ws_col, size.ws_row};
}

std::string Terminal::Encode(std::string_view text) const {
  return ConvertText(WithoutControls(text), kInside, encoding_ + "//TRANSLIT");
}

std::string Terminal::AsSeen(std::string_view text) const {
  return ConvertText(Encode(text), encoding_, kInside);
}

void Terminal::Write(std::string_view text) const {
  WriteAll(STDERR_FILENO, Encode(text));
}

void Terminal::WriteOutput(std::string_view text) const {
  WriteAll(STDOUT_FILENO, Encode(text));
}

void Terminal::WriteBytes(std::string_view bytes) const {
  WriteAll(STDERR_FILENO, bytes);
}

void Terminal::KeepKeysUnseen(bool is_on) {
  unseen_keys_.reset();
  if (is_on && CanAnswer()) unseen_keys_ = std::make_unique<InputModes>(false);
}

void Terminal::ForgetKeys() const {
  const WithoutOutputSignals guard;
  if (CanAnswer()) tcflush(STDIN_FILENO, TCIFLUSH);
}

std::optional<std::string> Terminal::ReadLine(bool is_hidden) const {
  std::optional<InputModes> scope;
  if (is_hidden) scope.emplace(true);
  // A byte at a time: what is typed beyond the line stays with the terminal, which also bounds the
  // length of a line.
  for (std::string line;;) {
    char byte = 0;
    if (!WaitForInput(STDIN_FILENO)) return std::nullopt;
    const ssize_t count = read(STDIN_FILENO, &byte, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0 || (is_hidden && byte == kInterrupt)) return std::nullopt;
    if (byte == '\n') return ConvertText(line, encoding_, kInside);
    line.push_back(byte);
  }
}

}  // namespace platform
