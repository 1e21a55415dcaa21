#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigaction is POSIX
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <utility>
#include <vector>

#include "platform/host.h"
#include "platform/linux/terminal_front_end.h"
#include "tests/support/sandbox.h"

namespace platform {
namespace {

using Action = std::function<int(FrontEnd&)>;

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
    const auto exit_code = has_waiting_parent ? WaitForUpdaterChain() : std::nullopt;
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

  // As when the window of the terminal is closed.
  void HangUp() {
    close(terminal_);
    terminal_ = -1;
  }

  bool IsEchoOn() const {
    termios state{};
    return tcgetattr(terminal_, &state) == 0 && (state.c_lflag & ECHO) != 0;
  }

  // The child's exit code; -1 when it was ended otherwise.
  int End() {
    while (ReadSome()) {
    }
    int status = 0;
    // Of a child that still waits; an ended one does not care, one without a terminal ends itself.
    if (terminal_ >= 0) kill(child_, SIGALRM);
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
    if (terminal_ < 0 || poll(&waiting, 1, 10000) != 1) return false;
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

// The lines of a screen on which these bytes have been written; only what a block needs is known.
std::vector<std::string> Screen(const std::string& bytes) {
  std::vector<std::string> lines(1);
  std::size_t row = 0;
  bool is_at_start = true;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] == '\x1B') {
      const std::size_t end = bytes.find_first_not_of("0123456789", i + 2);
      if (bytes[end] == 'A') row -= std::min(row, std::stoul(bytes.substr(i + 2)));
      if (bytes[end] == 'J') lines.resize(row + 1), lines[row].clear();
      i = end;
    } else if (bytes[i] == '\n') {
      if (++row == lines.size()) lines.emplace_back();
      is_at_start = true;
    } else if (bytes[i] != '\r') {
      if (std::exchange(is_at_start, false)) lines[row].clear();
      lines[row] += bytes[i];
    }
  }
  return lines;
}

// Its user's acts, in order, as digits: 1 cancel, 2 stop.
class Listener final : public ProgressViewEvents {
 public:
  explicit Listener(std::function<void(Listener&)> run) : run_(std::move(run)) {}
  void OnShown() override { run_(*this); }
  void OnCancel() override {
    acts = acts * 10 + 1;
    if (on_cancel) on_cancel();
  }
  void OnStop() override { acts = acts * 10 + 2; }

  int acts = 0;
  std::function<void()> on_cancel;

 private:
  std::function<void(Listener&)> run_;
};

TEST(TerminalWindow, IsABlockBelowEverythingElseThatIsSaid) {
  Conversation talk("ru_RU.UTF-8", [](FrontEnd& front_end) {
    const auto view = front_end.MakeProgressView();
    view->SetCaption("Web-обновление");
    view->SetButton("Отмена", true);
    int result = 0;
    Listener listener([&](Listener&) {
      view->SetStage("Загрузка");
      view->SetDetail("http://сервер/длинный-путь/漢漢漢漢漢漢漢/Программа.dll");
      view->ShowBar(BarKind::kBarWithCounter);
      view->SetProgress(45.9, "1 234/5 678");
      view->SetPace("1,2 МБ/с");
      front_end.AskText("Первый", "", false);
      result = AskFull(front_end);
      view->SetButton("Отмена", false);
      view->ShowBar(BarKind::kNone);
      view->SetPace("");
      view->SetStage("Готово");
      usleep(300000);
      view->Close();
    });
    view->Run(listener);
    return result;
  });
  using Lines = std::vector<std::string>;
  talk.Expect("> ");
  talk.Type("\n");
  talk.Expect("[д/н] ");
  const Lines boxes = {"[?] Первый",  "",      "> ", "[?] Обновление", "Заменить?",
                       "Да или нет?", "[д/н] "};
  EXPECT_EQ(Screen(talk.shown), boxes);
  const std::string first = talk.shown.substr(0, talk.shown.find("[?]"));
  EXPECT_EQ(Screen(first.substr(0, first.rfind("\r\n", first.rfind("\x1B[6A")) + 2)),
            (Lines{"Web-обновление", "Загрузка", "http://серве…漢漢漢漢漢漢/Программа.dll",
                   "█████████░░░░░░░░░░░  45 %  1 234/5 678", "1,2 МБ/с", "Ctrl+C: Отмена", ""}));
  talk.Type("д\n");
  talk.Expect("Готово");
  EXPECT_FALSE(talk.IsEchoOn());
  EXPECT_EQ(talk.End(), 1);
  EXPECT_EQ(Screen(talk.shown), (Lines{"[?] Первый", "", "> ", "[?] Обновление", "Заменить?",
                                       "Да или нет?", "[д/н] д", ""}));
}

TEST(TerminalWindow, CtrlCAsksOnceAndWhateverEndsProgramsOnlyAsksToo) {
  const struct {
    const char* what;
    std::vector<const char*> keys;  // each but the first at the question
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
    const Action run = [](FrontEnd& front_end) {
      const auto view = front_end.MakeProgressView();
      Listener listener([&](Listener& self) {
        view->SetStage("Работа");
        self.on_cancel = [&] { front_end.AskYesNo("Отмена", "Прекратить?"); };
        for (int i = 0; i < 5000 && self.acts != 2 && self.acts < 10; ++i, usleep(1000))
          front_end.RunPendingEvents();
        front_end.ShowMessage(MessageKind::kWarning, "Терминала", "может уже не быть");
        view->Close();
      });
      view->Run(listener);
      return listener.acts;
    };
    Conversation talk("ru_RU.UTF-8", run, true);
    for (std::size_t i = 0; i < c.keys.size(); ++i) {
      talk.Expect(i % 2 == 0 ? "Работа" : "[д/н] ");
      talk.Type(c.keys[i]);
    }
    if (c.keys.empty()) talk.Expect("Работа");
    if (c.signal == SIGTERM) talk.Signal(SIGTERM);
    if (c.signal == SIGHUP) talk.HangUp();
    EXPECT_EQ(talk.End(), c.acts) << c.what;
  }
}

TEST(TerminalWindow, IsPlainLinesWhereTheOutputIsAFile) {
  const tests::Sandbox sandbox;
  Conversation talk("ru_RU.KOI8-R", [&](FrontEnd& front_end) {
    dup2(open(sandbox.Path("out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDOUT_FILENO);
    const auto view = front_end.MakeProgressView();
    Listener listener([&](Listener&) {
      for (const char* const stage : {"Загрузка", "Загрузка", "", "Да"}) {
        view->SetStage(stage);
        view->ShowBar(BarKind::kBar);
        view->SetProgress(50, "");
      }
      view->Close();
    });
    view->Run(listener);
    return 0;
  });
  EXPECT_EQ(talk.End(), 0);
  EXPECT_EQ(sandbox.Read("out"), "\xFA\xC1\xC7\xD2\xD5\xDA\xCB\xC1\n\xE4\xC1\n");
  EXPECT_NE(talk.shown.find("\xE4\xC1\x1B[K\r\r\n\x8D"), std::string::npos) << talk.shown;
}

class Details final : public ErrorViewEvents {
 public:
  explicit Details(ErrorView& view) : view_(view) {}
  void OnDetails() override { view_.SetDetailView(true, "Подробнее  <<"); }
  void OnCopy() override {}

 private:
  ErrorView& view_;
};

TEST(TerminalWindow, AnErrorIsShownShortAndInFullOnRequest) {
  for (const bool can_answer : {true, false}) {
    Conversation talk("ru_RU.UTF-8", [&](FrontEnd& front_end) {
      if (!can_answer) close(STDIN_FILENO);
      const auto view = front_end.MakeErrorView();
      view->SetTexts({"Ошибка", "Произошла ошибка:", "Беда", "Беда\r\nСтек", "", "Закрыть"});
      view->SetDetailView(false, "Подробнее  >>");
      Details details(*view);
      view->Run(details);
      return 5;
    });
    if (can_answer) {
      talk.Expect("[!] Ошибка\r\nПроизошла ошибка:\r\nБеда\r\n[п] Подробнее  >>   [з] Закрыть: ");
      talk.Type("П\n");
      talk.Expect("Беда\r\nСтек");
      talk.Expect("Подробнее  <<   [з] Закрыть: ");
      talk.Type("з\n");
    }
    EXPECT_EQ(talk.End(), 5);
    EXPECT_NE(talk.shown.find("Беда\r\nСтек"), std::string::npos);
  }
}

}  // namespace
}  // namespace platform
