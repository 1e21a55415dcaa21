#include "foundation/error_handling.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "foundation/api_errors.h"
#include "foundation/error_environment.h"
#include "tests/fakes/recording_processes.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/caught.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

using tests::Caught;

class ErrorHandling : public testing::Test {
 protected:
  ErrorHandling() {
    processes_.own_program = "C:\\Папка\\TmWebUpdate.exe";
    ports_->processes = &processes_;
    ports_->front_end = &front_end_;
  }

  tests::ScopedPorts ports_;
  tests::RecordingProcesses processes_;
  tests::ScriptedFrontEnd front_end_;
};

TEST_F(ErrorHandling, FramesNameProgramModuleAndProcedure) {
  EXPECT_EQ(MakeFrame("BinaryFile", "OpenFile", 0, ""), "[TmWebUpdate::BinaryFile.OpenFile]");
  EXPECT_EQ(MakeFrame("", "Proc", 0, ""), "[TmWebUpdate::?.Proc]");
  EXPECT_EQ(MakeFrame("", "", 0, ""), "[TmWebUpdate::?]");
  EXPECT_EQ(MakeFrame("M", "P", 37, "доп"), "[TmWebUpdate::M.P (37)] {доп}");
}

TEST_F(ErrorHandling, AForeignSourceIsBracketedOnceAndStaysInnermost) {
  const ProgramError error = Caught([] {
    try {
      try {
        throw ProgramError(3045, "занят", "DAO.Database");
      } catch (...) {
        ReRaiseError("Inner", "A");
      }
    } catch (...) {
      ReRaiseError("Outer", "B", "x");
    }
  });
  EXPECT_EQ(error.Source, "[TmWebUpdate::Outer.B] {x}\r\n[TmWebUpdate::Inner.A]\r\n[DAO.Database]");
  EXPECT_EQ(error.Number, 3045);
  EXPECT_EQ(error.Description, "занят");
}

TEST_F(ErrorHandling, AnExceptionOfTheLanguageJoinsTheChain) {
  const auto error_of = [](const auto& thrown) {
    return Caught([&] {
      try {
        throw thrown;
      } catch (...) {
        ReRaiseError("M", "P");
      }
    });
  };
  const ProgramError error = error_of(std::length_error("слишком длинно"));
  EXPECT_EQ(error.Number, kInternalErrorNumber);
  EXPECT_EQ(error.Description, "Внутренняя ошибка программы: слишком длинно");
  EXPECT_EQ(error.Source, "[TmWebUpdate::M.P]");
  EXPECT_EQ(error_of(5).Description, "Внутренняя ошибка программы.");
  EXPECT_EQ(error_of(std::bad_alloc()).Description, "Недостаточно памяти.");
}

TEST_F(ErrorHandling, AFailureWithoutACodeStillRaises) {
  EXPECT_EQ(Caught([] { RaiseApiError(0); }).Description, "Unknown API error.");
  const ProgramError error = Caught([] { RaiseApiErrorWithMessage("Ошибка \"x\": ", 0); });
  EXPECT_EQ(error.Number, 1001);
  EXPECT_EQ(error.Description, "Ошибка \"x\": \r\nUnknown API error.");
}

TEST_F(ErrorHandling, ALoadedModuleExplainsItsOwnCodes) {
  // On Linux a table stands in for the library, which on Windows this program does not load.
  const bool has_module =
      ports::CurrentPorts().error_texts->FindLoadedModule("wininet.dll").has_value();
  const std::string text = GetApiErrorText(12007, "нет.dll|WinInet.dll");
  EXPECT_EQ(text.starts_with("Неизвестная ошибка API"), !has_module) << text;
  EXPECT_TRUE(GetApiErrorText(12007, "").starts_with("Неизвестная ошибка API 12007"));
}

TEST_F(ErrorHandling, CodesWithoutATextAreNamed) {
  EXPECT_EQ(GetApiErrorText(123456, ""), "Неизвестная ошибка API 123456 (0x1E240)");
  EXPECT_EQ(GetApiErrorText(-559038737, "нет.dll"),
            "Неизвестная ошибка API -559038737 (0xDEADBEEF)");
  EXPECT_EQ(FormatSystemMessage(123456, 0), "");
}

class RecordingWindow final : public ErrorWindow {
 public:
  explicit RecordingWindow(std::vector<std::string>& log) : log_(log) {}
  void Execute(const std::string& message, const std::string& chain, std::int32_t code,
               const std::string& caption) override {
    log_.push_back(message + "|" + chain + "|" + std::to_string(code) + "|" + caption);
    throw std::runtime_error("the window itself fails");
  }

 private:
  std::vector<std::string>& log_;
};

class FailingForm final : public ReportedWindow {
 public:
  int calls = 0;
  void Hide() override {
    ++calls;
    throw std::runtime_error("hide");
  }
  void Unload() override {
    ++calls;
    throw std::runtime_error("unload");
  }
};

TEST_F(ErrorHandling, ReportingShowsTheErrorAndClosesTheFormWhateverFails) {
  std::vector<std::string> log;
  bool is_unattended = false;
  ErrorEnvironment saved = SetErrorEnvironment(
      {[&] { return std::make_unique<RecordingWindow>(log); }, [&] { return is_unattended; }});
  FailingForm form;
  const auto report = [&] {
    try {
      throw ProgramError(5, "Беда");
    } catch (...) {
      ReportError("Form", "theTimer_Timer", "", &form);
    }
  };
  report();
  EXPECT_EQ(log, std::vector<std::string>{"Беда|[TmWebUpdate::Form.theTimer_Timer]|5|"});
  EXPECT_EQ(form.calls, 2);
  EXPECT_EQ(front_end_.cursor_resets, 2);  // once with the frame, once with the window
  is_unattended = true;
  report();
  EXPECT_EQ(front_end_.cursor_resets, 3);
  SetErrorEnvironment(std::move(saved));
}

TEST_F(ErrorHandling, SplittingFramesFromTheMessageBehindThem) {
  struct Case {
    const char* text;
    const char* message;
    const char* frames;
  };
  const Case cases[] = {
      {"", "", ""},
      {"Сообщение", "Сообщение", ""},
      {"[a::b]\r\n[c]\r\nТекст", "Текст", "[a::b]\r\n[c]\r\n"},
      {"[a] {x}\nТекст [5] тут", "Текст [5] тут", "[a] {x}\n"},
      {"[a]\r\nЯ", "", "[a]\r\n"},  // one last character is dropped
      {"[a]", "[a]", ""},
      {"[a]\r\n", "", "[a]\r"},
  };
  for (const Case& c : cases) {
    std::string message;
    std::string frames;
    SplitErrorText(c.text, message, frames);
    EXPECT_EQ(message, c.message) << c.text;
    EXPECT_EQ(frames, c.frames) << c.text;
  }
}

}  // namespace
}  // namespace tmw
