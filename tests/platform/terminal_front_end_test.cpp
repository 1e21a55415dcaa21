#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigaction is POSIX
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <vector>

#include "platform/front_end.h"

namespace platform {
namespace {

using Action = std::function<int(FrontEnd&)>;

// A child process that talks to its user on a terminal of its own, in that locale; its exit code is
// the action's result. The test is the user.
class Conversation {
 public:
  Conversation(const char* locale, const Action& action) {
    child_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (child_ != 0) return;
    setenv("LC_ALL", locale, 1);
    _exit(action(*MakeFrontEnd()));
  }
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;
  ~Conversation() {
    if (child_ > 0) End();
    close(terminal_);
  }

  // Waits until these words have been shown since the last such wait.
  void Expect(const std::string& words) {
    while (shown.find(words, seen_) == std::string::npos)
      ASSERT_TRUE(ReadSome()) << "waited for " << words << ", shown: " << shown;
    seen_ = shown.find(words, seen_) + words.size();
  }

  void Type(const std::string& keys) const {
    EXPECT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  void Signal(int signal) const { kill(child_, signal); }

  bool IsEchoOn() const {
    termios state{};
    return tcgetattr(terminal_, &state) == 0 && (state.c_lflag & ECHO) != 0;
  }

  // The child's exit code; -1 when it was ended otherwise.
  int End() {
    while (ReadSome()) {
    }
    int status = 0;
    kill(child_, SIGALRM);  // of a child that still waits; an ended one does not care
    waitpid(child_, &status, 0);
    child_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string shown;

 private:
  // False at the end, and when nothing comes for ten seconds.
  bool ReadSome() {
    pollfd waiting{terminal_, POLLIN, 0};
    std::array<char, 1024> buffer{};
    if (poll(&waiting, 1, 10000) != 1) return false;
    const ssize_t count = read(terminal_, buffer.data(), buffer.size());
    if (count > 0) shown.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
  }

  int terminal_ = -1;
  pid_t child_ = -1;
  std::size_t seen_ = 0;
};

int AskFull(FrontEnd& front_end) {
  return front_end.AskYesNo("Обновление", "Заменить?\r\nДа или нет?") ? 1 : 0;
}

TEST(TerminalFrontEnd, AQuestionIsAskedInTheUsersEncodingUntilItIsAnswered) {
  struct Case {
    const char* locale;
    const char* prompt;  // as bytes
    std::vector<std::string> answers;
    int result;
  };
  const char* const utf8 = "Да или нет?\r\n[д/н] ";
  const char* const koi8 = "\xE4\xC1 \xC9\xCC\xC9 \xCE\xC5\xD4?\r\n[\xC4/\xCE] ";
  const char* const ansi = "\xC4\xE0 \xE8\xEB\xE8 \xED\xE5\xF2?\r\n[\xE4/\xED] ";
  const std::string end_of_input = "\x04";
  const Case cases[] = {
      {"ru_RU.UTF-8", utf8, {"д\n"}, 1},
      {"ru_RU.UTF-8", utf8, {" НЕТ \n"}, 0},
      {"ru_RU.UTF-8", utf8, {"\n", "что?\n", "дд\n", "Да\n"}, 1},
      {"ru_RU.UTF-8", utf8, {"\xFF\xD0\n", "n\n"}, 0},
      {"ru_RU.UTF-8", utf8, {end_of_input}, 0},
      {"ru_RU.UTF-8", utf8, {"д" + end_of_input + end_of_input}, 0},
      {"C", utf8, {"y\n"}, 1},
      {"ru_RU.KOI8-R", koi8, {"\xC4\n"}, 1},
      {"ru_RU.KOI8-R", koi8, {"\xCE\n"}, 0},
      {"ru_RU.CP1251", ansi, {"\xE4\n"}, 1},
  };
  for (const Case& c : cases) {
    Conversation talk(c.locale, AskFull);
    talk.Expect(c.prompt);
    for (const std::string& answer : c.answers) {
      talk.Type(answer);
      if (&answer != &c.answers.back()) talk.Expect("[д/н] ");
    }
    EXPECT_EQ(talk.End(), c.result) << c.locale << " " << c.answers.back();
  }
}

TEST(TerminalFrontEnd, ASecretIsNeitherShownNorLeavesTheTerminalMute) {
  const Action ask_secret = [](FrontEnd& front_end) {
    const auto secret = front_end.AskText("Пароль", "Введите пароль:", true);
    front_end.ShowMessage(MessageKind::kInformation, "Дальше", "Готово");
    const auto open = front_end.AskText("Имя", "Введите имя:", false);
    return (secret == "тайна" ? 1 : 0) + (!secret ? 2 : 0) + (open == "" ? 4 : 0);
  };
  for (const bool is_declined : {false, true}) {
    Conversation talk("ru_RU.UTF-8", ask_secret);
    talk.Expect("Введите пароль:\r\n> ");
    for (int i = 0; i < 1000 && talk.IsEchoOn(); ++i)
      usleep(1000);
    talk.Type(is_declined ? "тайна\x03" : "тайна\n");
    talk.Expect("[i] Дальше\r\nГотово\r\n");
    talk.Expect("имя:\r\n> ");
    EXPECT_TRUE(talk.IsEchoOn());
    talk.Type("\n");
    EXPECT_EQ(talk.End(), is_declined ? 6 : 5);
    EXPECT_EQ(talk.shown.find("тайна"), std::string::npos) << talk.shown;
  }
}

TEST(TerminalFrontEnd, ASignalWhileTheUserThinksChangesNothing) {
  Conversation talk("ru_RU.UTF-8", [](FrontEnd& front_end) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);  // without SA_RESTART: reads are interrupted
    return AskFull(front_end);
  });
  talk.Expect("[д/н] ");
  usleep(20000);
  talk.Signal(SIGUSR1);
  talk.Type("д\n");
  EXPECT_EQ(talk.End(), 1);
}

TEST(TerminalFrontEnd, WhatAServerSaysCannotSteerTheTerminal) {
  Conversation talk("ru_RU.KOI8-R", [](FrontEnd& front_end) {
    front_end.ShowMessage(MessageKind::kWarning, "A\x1B[2J", "B\x07\xC2\x9B\tC № 漢\xFF\nD");
    return 0;
  });
  EXPECT_EQ(talk.End(), 0);
  EXPECT_EQ(talk.shown.substr(0, 15), "[!] A[2J\r\nBC No");
  EXPECT_TRUE(talk.shown.ends_with(" ??\r\nD\r\n")) << talk.shown;
}

TEST(TerminalFrontEnd, WithoutSomebodyToAskTheAnswerIsNo) {
  const Action ask_all = [](FrontEnd& front_end) {
    front_end.ShowMessage(MessageKind::kWarning, "A", "B");
    return AskFull(front_end) + (front_end.AskText("A", "B", true) ? 2 : 0) + 8;
  };
  // In the background of its terminal, where reading would stop it.
  Conversation background("ru_RU.UTF-8", [&](FrontEnd& front_end) {
    const pid_t grandchild = fork();
    if (grandchild == 0) {
      setpgid(0, 0);
      _exit(ask_all(front_end));
    }
    int status = 0;
    waitpid(grandchild, &status, WUNTRACED);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 99;
  });
  EXPECT_EQ(background.End(), 8);
  EXPECT_NE(background.shown.find("Заменить?"), std::string::npos);
  // With its output gone.
  Conversation mute("ru_RU.UTF-8", [&](FrontEnd& front_end) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return 99;
    close(ends[0]);
    dup2(ends[1], STDERR_FILENO);
    return ask_all(front_end);
  });
  EXPECT_EQ(mute.End(), 8);
}

}  // namespace
}  // namespace platform
