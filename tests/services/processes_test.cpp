#include "services/processes.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "foundation/api_errors.h"
#include "foundation/text.h"
#include "ports/processes.h"
#include "tests/fakes/recording_processes.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/caught.h"
#include "tests/support/environment.h"
#include "tests/support/processes.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

TEST(Processes, AStartedProgramGetsArgumentsFolderAndEnvironment) {
  const tests::Sandbox sandbox;
  const tests::ScopedVariable variable("TMW_TEST_VARIABLE", "handed on");
  const std::string program = tests::ChildProgram();
  const std::string line = "\"" + program + "\" report \"" + sandbox.Path("отчёт") +
                           "\" \"два слова\" ^\"q^\" a^^b x^y \"\" Ёж";
  ASSERT_EQ(RunProcess(program, line, sandbox.Path(), true, 0), 0);
  EXPECT_EQ(sandbox.Read("отчёт"), sandbox.Path() + "\nhanded on\nдва слова\n\"q\"\na^b\nx^y\n" +
                                       (tests::kOnWindows ? "" : "\n") + "Ёж\n");
}

TEST(Processes, RelativeProgramsAndFoldersCountFromTheCurrentOne) {
  const tests::Sandbox sandbox;
  const auto before = std::filesystem::current_path();
  const auto program = tests::ToPath(tests::ChildProgram());
  std::filesystem::current_path(program.parent_path());
  const auto folder = std::filesystem::relative(tests::ToPath(sandbox.Path()));
  const std::string name = (tests::kOnWindows ? ".\\" : "./") + program.filename().string();
  const std::string line = "\"" + name + "\" report \"" + sandbox.Path("отчёт") + "\"";
  // On Windows the sandbox may lie on another drive.
  const std::string work_dir = folder.empty() ? sandbox.Path() : tests::FromPath(folder);
  EXPECT_EQ(RunProcess(name, line, work_dir, true, 0), 0);
  std::filesystem::current_path(before);
  EXPECT_EQ(sandbox.Read("отчёт").substr(0, sandbox.Path().size() + 1), sandbox.Path() + "\n");
}

TEST(Processes, WaitingLetsEventsRunEveryHalfSecondAndGivesTheExitCode) {
  const tests::ScopedPorts ports;
  tests::ScriptedFrontEnd front_end;
  ports->front_end = &front_end;
  const std::string line = "\"" + tests::ChildProgram() + "\" sleep 1200 crash 7";
  EXPECT_EQ(RunProcess("", line, "", true, 0), 7);
  EXPECT_GE(front_end.event_rounds, 2);
  EXPECT_LE(front_end.event_rounds, 8);
}

TEST(Processes, WhatCannotBeStartedRaisesTheSystemsError) {
  const tests::Sandbox sandbox;
  const std::string missing = sandbox.Path("нет такой");
  const auto error = tests::Caught([&] { RunProcess(missing, "", "", true, 0); });
  EXPECT_EQ(error.Number, 2);
  EXPECT_EQ(error.Description, GetApiErrorText(2, ""));
  EXPECT_NE(error.Source.find("::mProcesses.RunProcess] {" + missing + "}"), std::string::npos)
      << error.Source;
  tests::Caught([&] { RunProcess("", "", "", false, 0); });
  tests::Caught([&] { RunProcess(tests::ChildProgram(), "", missing, true, 0); });
}

TEST(Processes, AProgramThatNeedsRightsIsStartedElevatedAndMayBeDeclined) {
  const tests::ScopedPorts ports;
  tests::RecordingProcesses processes;
  processes.refusals = {740, 1223};
  ports->processes = &processes;
  const auto error = tests::Caught(
      [] { RunProcess("", " \"a b.exe\"  -x \"1 2\" ", "folder", true, kContinuesChain | 0x302); });
  EXPECT_EQ(error.Number, 1223);
  EXPECT_EQ(error.Source,
            "[TmWebUpdate::mProcesses.RunProcess] { \"a b.exe\"  -x \"1 2\" }\r\n"
            "[TmWebUpdate::mProcesses.RunProcessInElevationMode] {\"a b.exe\"}");
  EXPECT_FALSE(processes.last_start.feedback_on);
  EXPECT_TRUE(processes.last_start.feedback_off);
  EXPECT_EQ(processes.last_start.show_window, std::uint16_t{3});
  EXPECT_EQ(processes.last_elevated_start.program, "\"a b.exe\"");
  EXPECT_EQ(processes.last_elevated_start.parameters, "-x \"1 2\"");
  EXPECT_EQ(processes.last_elevated_start.working_folder, "folder");
  EXPECT_TRUE(processes.last_elevated_start.continues_chain);
}

TEST(Processes, TheProgramIsSplitOffAFullCommandLine) {
  const struct {
    const char* exe;
    const char* line;
    const char* exe_after;
    const char* line_after;
  } cases[] = {
      {"", "  \"a b\"  -x 1 ", "\"a b\"", "-x 1"},
      {"p", "a -x", "p", "-x"},
      {"", "a", "a", "a"},
      {"p", "\"a b\"", "p", "\"a b\""},
      {"", "a\tb c", "a\tb", "c"},
      {"", "", "", ""},
  };
  for (const auto& c : cases) {
    std::string exe = c.exe;
    std::string line = c.line;
    NormalizeExeNameAndCmdLine(exe, line);
    EXPECT_EQ(exe, c.exe_after) << c.line;
    EXPECT_EQ(line, c.line_after) << c.line;
  }
}

}  // namespace
}  // namespace tmw
