#include "platform/linux/terminal.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is POSIX
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigtimedwait is POSIX
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "platform/unique_handle.h"

namespace platform {
namespace {

constexpr char kInterrupt = '\x03';  // Ctrl+C

struct ConverterTraits {
  using Type = iconv_t;
  static Type Invalid() {
    return reinterpret_cast<Type>(-1);  // NOLINT(performance-no-int-to-ptr): the call's own value
  }
  static void Close(Type converter) { iconv_close(converter); }
};

struct LocaleTraits {
  using Type = locale_t;
  static Type Invalid() { return nullptr; }
  static void Close(Type locale) { freelocale(locale); }
};

// The encoding in the name of a locale ("ru_RU.KOI8-R@x"); empty when it has none.
std::string EncodingOfLocaleName() {
  for (const char* const variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* const value = std::getenv(variable);
    if (value == nullptr || *value == '\0') continue;
    const std::string name = value;
    const std::size_t dot = name.find('.');
    if (dot == std::string::npos) return {};
    return name.substr(dot + 1, name.find('@', dot) - dot - 1);
  }
  return {};
}

std::string EncodingOfLocale() {
  const UniqueHandle<LocaleTraits> locale(newlocale(LC_CTYPE_MASK, "", nullptr));
  const std::string encoding =
      locale ? nl_langinfo_l(CODESET, locale.Get()) : EncodingOfLocaleName();
  // The "C" locale says ASCII; terminals are UTF-8 all the same.
  return encoding.empty() || encoding == "ANSI_X3.4-1968" ? "UTF-8" : encoding;
}

// What cannot be converted becomes "?", a byte or (of UTF-8) a character at a time. An encoding
// that the system does not know leaves the text as it is.
std::string Convert(std::string_view text, const std::string& from, const std::string& to) {
  const UniqueHandle<ConverterTraits> converter(iconv_open(to.c_str(), from.c_str()));
  if (!converter) return std::string(text);
  std::string input(text);
  std::string result;
  char* in = input.data();
  std::size_t in_left = input.size();
  while (in_left > 0) {
    std::array<char, 512> buffer{};
    char* out = buffer.data();
    std::size_t out_left = buffer.size();
    const bool is_done =
        iconv(converter.Get(), &in, &in_left, &out, &out_left) != static_cast<std::size_t>(-1);
    const int code = errno;
    result.append(buffer.data(), buffer.size() - out_left);
    if (is_done || code == E2BIG) continue;
    result.push_back('?');
    do {
      ++in;
      --in_left;
    } while (from == "UTF-8" && in_left > 0 && (static_cast<unsigned char>(*in) & 0xC0U) == 0x80U);
  }
  return result;
}

// Control characters out of a UTF-8 text: those of ASCII and U+0080 to U+009F, line feeds excepted.
std::string WithoutControls(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte < 0x20 && byte != '\n') || byte == 0x7F) continue;
    const bool is_pair = byte == 0xC2 && i + 1 < text.size();
    if (is_pair && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      ++i;
      continue;
    }
    plain.push_back(text[i]);
  }
  return plain;
}

// Keeps the signal of a broken pipe from this thread: a reader that has gone must not end an
// update.
class WithoutPipeSignal {
 public:
  WithoutPipeSignal() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending{};
    sigpending(&pending);
    was_pending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &saved_);
  }
  WithoutPipeSignal(const WithoutPipeSignal&) = delete;
  WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;
  ~WithoutPipeSignal() {
    const timespec at_once{};
    if (!was_pending_) sigtimedwait(&pipe_, nullptr, &at_once);
    pthread_sigmask(SIG_SETMASK, &saved_, nullptr);
  }

 private:
  sigset_t pipe_{};
  sigset_t saved_{};
  bool was_pending_ = false;
};

// Typed characters stay unseen for the time of a scope. Ctrl+C then is a character that ends the
// line, so that it cannot end the program with the echo switched off.
class HiddenInput {
 public:
  explicit HiddenInput(bool is_hidden) {
    if (!is_hidden || tcgetattr(STDIN_FILENO, &saved_) != 0) return;
    termios hidden = saved_;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
    hidden.c_cc[VEOL] = kInterrupt;
    is_changed_ = tcsetattr(STDIN_FILENO, TCSADRAIN, &hidden) == 0;
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;
  ~HiddenInput() {
    if (is_changed_) tcsetattr(STDIN_FILENO, TCSADRAIN, &saved_);
  }

 private:
  termios saved_{};
  bool is_changed_ = false;
};

}  // namespace

Terminal::Terminal() : encoding_(EncodingOfLocale()) {}

bool Terminal::CanAnswer() const {
  if (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0) return false;
  // Reading in the background would stop the process. -1: a terminal without such an order.
  const pid_t foreground = tcgetpgrp(STDIN_FILENO);
  return foreground == -1 || foreground == getpgrp();
}

void Terminal::Write(std::string_view text) const {
  const std::string bytes = Convert(WithoutControls(text), "UTF-8", encoding_ + "//TRANSLIT");
  const WithoutPipeSignal guard;
  std::string_view rest = bytes;
  while (!rest.empty()) {
    const ssize_t written = write(STDERR_FILENO, rest.data(), rest.size());
    if (written > 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || errno != EINTR) {
      return;
    }
  }
}

std::optional<std::string> Terminal::ReadLine(bool is_hidden) const {
  const HiddenInput scope(is_hidden);
  // A byte at a time: what is typed beyond the line stays with the terminal, which also bounds the
  // length of a line.
  for (std::string line;;) {
    char byte = 0;
    const ssize_t count = read(STDIN_FILENO, &byte, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0 || (is_hidden && byte == kInterrupt)) return std::nullopt;
    if (byte == '\n') return Convert(line, encoding_, "UTF-8");
    line.push_back(byte);
  }
}

}  // namespace platform
