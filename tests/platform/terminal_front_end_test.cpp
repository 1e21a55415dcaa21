#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigaction is POSIX
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <vector>

#include "platform/linux/terminal/terminal_front_end.h"
#include "ports/host.h"
#include "tests/support/sandbox.h"

namespace platform {
namespace {

using Action = std::function<int(ports::FrontEnd&)>;

// A child process that talks to its user on a terminal of its own, in that locale; its exit code is
// the action's result. The test is the user.
class Conversation {
 public:
  Conversation(const char* locale, const Action& action, bool has_waiting_parent = false) {
    const winsize size{24, 40, 0, 0};
    child_ = forkpty(&terminal_, nullptr, nullptr, &size);
    if (child_ != 0) return;
    setenv("LC_ALL", locale, 1);
    setenv("TERM", "xterm", 1);
    const auto exit_code = has_waiting_parent ? ports::WaitForUpdaterChain() : std::nullopt;
    if (exit_code) _exit(*exit_code);
    _exit(action(*MakeTerminalFrontEnd()));
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

  void Resize(unsigned short columns) const {
    const winsize size{24, columns, 0, 0};
    ioctl(terminal_, TIOCSWINSZ, &size);
  }

  // As when the window of the terminal is closed.
  void HangUp() {
    close(terminal_);
    terminal_ = -1;
  }

  bool IsEchoOn() const {
    termios state{};
    return tcgetattr(terminal_, &state) == 0 && (state.c_lflag & ECHO) != 0;
  }

  // The child's exit code; -1 if it was ended otherwise.
  int End() {
    while (ReadSome()) {
    }
    int status = 0;
    // Ends a child that still waits; one without a terminal ends by itself.
    if (terminal_ >= 0) kill(child_, SIGALRM);
    waitpid(child_, &status, 0);
    child_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string shown;

 private:
  // Returns false at the end, and if nothing arrives for ten seconds.
  bool ReadSome() {
    pollfd waiting{terminal_, POLLIN, 0};
    std::array<char, 1024> buffer{};
    if (terminal_ < 0 || poll(&waiting, 1, 10000) != 1) return false;
    const ssize_t count = read(terminal_, buffer.data(), buffer.size());
    if (count > 0) shown.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
  }

  int terminal_ = -1;
  pid_t child_ = -1;
  std::size_t seen_ = 0;
};

int AskFull(ports::FrontEnd& front_end) {
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
  const char* const latin = "Da ili net?\r\n[d/n] ";
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
      {"C", utf8, {"d\n"}, 1},
      {"en_US.ISO-8859-1", latin, {"d\n"}, 1},
      {"de_DE.ISO-8859-15", latin, {"Da\n"}, 1},
      {"en_US.ISO-8859-1", latin, {"net\n"}, 0},
      {"ru_RU.KOI8-R", koi8, {"\xC4\n"}, 1},
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
  const Action ask_secret = [](ports::FrontEnd& front_end) {
    const auto secret = front_end.AskText("Пароль", "Введите пароль:", true);
    front_end.ShowMessage(ports::MessageKind::kInformation, "Дальше", "Готово", "");
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

TEST(TerminalFrontEnd, WhatAServerSaysCannotSteerTheTerminal) {
  Conversation talk("ru_RU.KOI8-R", [](ports::FrontEnd& front_end) {
    front_end.ShowMessage(ports::MessageKind::kWarning, "A\x1B[2J", "B\x07\xC2\x9B\tC № 漢\xFF\nD",
                          "E");
    return 0;
  });
  EXPECT_EQ(talk.End(), 0);
  EXPECT_EQ(talk.shown.substr(0, 15), "[!] A[2J\r\nBC No");
  EXPECT_TRUE(talk.shown.ends_with(" ??\r\nD\r\nE\r\n")) << talk.shown;
}

TEST(TerminalFrontEnd, WithoutSomebodyToAskTheAnswerIsNo) {
  const Action ask_all = [](ports::FrontEnd& front_end) {
    front_end.ShowMessage(ports::MessageKind::kWarning, "A", "B", "C");
    return AskFull(front_end) + (front_end.AskText("A", "B", true) ? 2 : 0) + 8;
  };
  // In the background of its terminal, where reading would stop it.
  Conversation background("ru_RU.UTF-8", [&](ports::FrontEnd& front_end) {
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
  EXPECT_NE(background.shown.find("Да или нет?\r\n(Ответить некому: принято \"нет\".)\r\n"),
            std::string::npos);
  // With its output gone.
  Conversation mute("ru_RU.UTF-8", [&](ports::FrontEnd& front_end) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return 99;
    close(ends[0]);
    dup2(ends[1], STDERR_FILENO);
    return ask_all(front_end);
  });
  EXPECT_EQ(mute.End(), 8);
}

// A window whose work is the script; its user's acts, in order, as digits: 1 cancel, 2 stop.
struct Window final : ports::ProgressViewEvents {
  std::unique_ptr<ports::ProgressView> view;
  std::function<void()> script;
  std::function<void()> on_cancel = [] {};
  int acts = 0;
  void OnShown() override { script(); }
  void OnCancel() override {
    acts = acts * 10 + 1;
    on_cancel();
  }
  void OnStop() override { acts = acts * 10 + 2; }
};

int RunWindow(ports::FrontEnd& front_end, const std::function<void(Window&)>& script) {
  Window window;
  window.view = front_end.MakeProgressView();
  window.script = [&] {
    script(window);
    window.view->Close();
  };
  window.view->Run(window);
  return window.acts;
}

TEST(TerminalWindow, IsABlockRedrawnInPlaceBelowWhatIsAsked) {
  Conversation talk("ru_RU.UTF-8", [](ports::FrontEnd& front_end) {
    return RunWindow(front_end, [&](Window& window) {
      window.view->SetDetail("http://сервер/длинный-путь/漢漢漢漢漢漢漢/Программа.dll");
      window.view->ShowBar(ports::BarKind::kBarWithCounter);
      window.view->SetProgress(45.9, "1 234/5 678");
      window.view->SetNotes({"этап 2 из 6", "Программа.dll", "байт"});
      window.view->SetButton("Отмена", true);
      AskFull(front_end);
      for (int i = 0; i < 5000 && window.acts == 0; ++i, usleep(1000))
        front_end.RunPendingEvents();
    });
  });
  const std::string end = "\x1B[K\r\r\n";
  const auto block = [&](const std::string& detail, const std::string& bar) {
    return detail + end + "этап 2 из 6: Программа.dll" + end + bar + "  45 %  1 234/5 678 байт" +
           end + "Ctrl+C: Отмена" + end + "\x1B[J";
  };
  const std::string wide = block("http://сервер/длинный-путь/漢漢漢漢漢漢漢/Программа.dll",
                                 "██████████████████░░░░░░░░░░░░░░░░░░░░░░");
  talk.Expect("\x1B[3A" + block("http://серве…漢漢漢漢漢漢/Программа.dll", "██████░░░░░░░░░") +
              "\x1B[4A\x1B[J[?] Обновление\r\nЗаменить?");
  talk.Expect("[д/н] ");
  talk.Resize(65);  // which changes nothing about the question
  talk.Type("д\n");
  talk.Expect("д\r\n" + wide);
  EXPECT_FALSE(talk.IsEchoOn());
  talk.Type("\x03");
  EXPECT_EQ(talk.End(), 1);
  EXPECT_TRUE(talk.shown.ends_with(wide + "\x1B[4A\x1B[J")) << talk.shown;
}

TEST(TerminalWindow, CtrlCAsksOnceAndWhateverEndsProgramsOnlyAsksToo) {
  const struct {
    const char* what;
    std::vector<const char*> keys;  // every second one at the question
    int acts;
    int signal = 0;
  } cases[] = {
      {"twice", {"\x03", "\x03"}, 12},
      {"asked anew after an answer", {"\x03", "н\n", "\x03", "н\n"}, 11},
      {"insists at once", {"\x1C"}, 2},
      {"of the system, to the waiting parent", {}, 2, SIGTERM},
      {"terminal closed", {}, 2, SIGHUP},
  };
  for (const auto& c : cases) {
    const Action run = [](ports::FrontEnd& front_end) {
      return RunWindow(front_end, [&](Window& window) {
        window.view->SetStage("Работа");
        window.on_cancel = [&] { front_end.AskYesNo("Отмена", "Прекратить?"); };
        for (int i = 0; i < 5000 && window.acts != 2 && window.acts < 10; ++i, usleep(1000))
          front_end.RunPendingEvents();
        front_end.ShowMessage(ports::MessageKind::kWarning, "Терминала", "может уже не быть", "");
      });
    };
    Conversation talk("ru_RU.UTF-8", run, true);
    talk.Expect("Работа");
    for (std::size_t i = 0; i < c.keys.size(); ++i) {
      if (i > 0) talk.Expect(i % 2 == 0 ? "Работа" : "[д/н] ");
      talk.Type(c.keys[i]);
    }
    if (c.signal == SIGTERM) talk.Signal(SIGTERM);
    if (c.signal == SIGHUP) talk.HangUp();
    EXPECT_EQ(talk.End(), c.acts) << c.what;
  }
}

TEST(TerminalWindow, IsPlainLinesWhereTheOutputIsAFile) {
  const tests::Sandbox sandbox;
  Conversation talk("ru_RU.KOI8-R", [&](ports::FrontEnd& front_end) {
    dup2(open(sandbox.Path("out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDOUT_FILENO);
    return RunWindow(front_end, [&](Window& window) {
      window.view->ShowBar(ports::BarKind::kBar);
      for (const char* const stage : {"Загрузка", "Загрузка", "", "Да"}) {
        window.view->SetStage(stage);
        window.view->SetProgress(50, "");
      }
    });
  });
  EXPECT_EQ(talk.End(), 0);
  EXPECT_EQ(sandbox.Read("out"), "\xFA\xC1\xC7\xD2\xD5\xDA\xCB\xC1\n\xE4\xC1\n");
  EXPECT_NE(talk.shown.find("\xE4\xC1\x1B[K\r\r\n\x8D"), std::string::npos) << talk.shown;
}

struct Details final : ports::ErrorViewEvents {
  std::unique_ptr<ports::ErrorView> view;
  void OnDetails() override { view->SetDetailView(true, "Подробнее  <<"); }
  void OnCopy() override {}
};

TEST(TerminalWindow, AnErrorIsShownShortAndInFullOnRequest) {
  const auto run = [&](ports::FrontEnd& front_end) {
    Details details;
    details.view = front_end.MakeErrorView();
    details.view->SetTexts({"Ошибка", "Произошла ошибка:", "", "Беда", "Беда\r\nСтек\r\n", "",
                            "Закрыть", "Совет.", "Журнал:", "/л"});
    details.view->SetDetailView(false, "Подробнее  >>");
    details.view->Run(details);
    close(STDIN_FILENO);  // nobody can answer
    details.view->Run(details);
    return 5;
  };
  Conversation talk("ru_RU.UTF-8", run);
  const std::string ends = "Совет.\r\nЖурнал: /л\r\n";
  talk.Expect("[!] Ошибка\r\nПроизошла ошибка:\r\nБеда\r\n" + ends +
              "[п] Подробнее  >>   [з] Закрыть: ");
  talk.Type("П\n");
  talk.Expect("Беда\r\nСтек\r\n" + ends + "[п] Подробнее  <<   [з] Закрыть: ");
  talk.Type("з\n");
  EXPECT_EQ(talk.End(), 5);
  EXPECT_TRUE(talk.shown.ends_with("[!] Ошибка\r\nБеда\r\nСтек\r\n\r\n" + ends)) << talk.shown;
  // In a session without Cyrillic the keys are those that it shows, or the English ones.
  for (const std::string keys : {"pz", "dc"}) {
    Conversation latin("en_US.ISO-8859-1", run);
    latin.Expect("[p] Podrobnee  >>   [z] Zakry`t`: ");
    latin.Type(keys.substr(0, 1) + "\n");
    latin.Expect("[p] Podrobnee  <<   [z] Zakry`t`: ");
    latin.Type(keys.substr(1) + "\n");
    EXPECT_EQ(latin.End(), 5) << keys;
  }
}

}  // namespace
}  // namespace platform
