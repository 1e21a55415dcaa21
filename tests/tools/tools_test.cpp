#include <gtest/gtest.h>

#include "foundation/program_error.h"
#include "tests/fakes/hand_clock.h"
#include "tests/support/scoped_ports.h"
#include "tools/program.h"
#include "tools/progress.h"

namespace tests {
namespace {

using Words = std::vector<std::string>;

int Print(const tools::Arguments& arguments) {
  std::cout << arguments.Has("--flag") << '|' << arguments.Value("--name").value_or("-") << '|';
  for (const std::string& word : arguments.Words())
    std::cout << '<' << word << '>';
  return 7;
}

int Fail(const tools::Arguments& arguments) {
  const bool is_own = arguments.Has("--json");
  throw tmw::ProgramError(is_own ? tmw::kProgramErrorNumber : 5,
                          arguments.NeededValue("--why") + "\r\n");
}

const tools::Usage kPrint = {
    "print",
    "ONE [TWO]",
    1,
    2,
    "взять много слов, которые вместе не помещаются на одной строке помощи",
    {{"--flag", "", "a flag"}, {"--name", "VALUE", "a value"}}};
const tools::Usage kFail = {"fail", "", 0, 0, "always", {{"--why", "REASON", "why"}}};

tools::Program MakeTool() {
  return {"tool", "tool - tries things out", "The end.\n", {{kPrint, Print}, {kFail, Fail}}, true,
          3};
}

// The exit code, then standard output and standard error.
std::string ResultOf(const Words& arguments) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int code = tools::RunProgram(MakeTool(), arguments);
  const std::string output = testing::internal::GetCapturedStdout();
  return std::to_string(code) + " " + output + testing::internal::GetCapturedStderr();
}

std::string Wrong(const std::string& complaint) {
  return "2 tool: " + complaint + "; see tool --help\n";
}

TEST(Tools, ACommandGetsItsOptionsAndWordsOrTheUserAComplaint) {
  const struct {
    Words arguments;
    std::string result;
  } cases[] = {
      {{"print", "a"}, "7 0|-|<a>"},
      {{"print", "a", "--name", "b", "c", "--flag"}, "7 1|b|<a><c>"},
      {{"print", "--name=a b,c=", "--name", "--flag", "x"}, "7 0|--flag|<x>"},
      {{"print", "--name=", "-"}, "7 0||<->"},
      {{"print", "--", "--flag", "Имя файла"}, "7 0|-|<--flag><Имя файла>"},
      {{}, Wrong("no command")},
      {{"--flag"}, Wrong("unknown option --flag")},
      {{"print"}, Wrong("too few arguments")},
      {{"print", "a", "b", "c"}, Wrong("too many arguments")},
      {{"print", "--names", "a"}, Wrong("unknown option --names")},
      {{"print", "--names", "a", "--name"}, Wrong("unknown option --names")},
      {{"print", "a", "--имя"}, Wrong("unknown option --имя")},
      {{"print", "-f", "a", "b", "c"}, Wrong("unknown option -f")},
      {{"print", "--flag=yes", "a"}, Wrong("--flag takes no value")},
      {{"print", "a", "--name"}, Wrong("--name needs a value")},
      {{"print", "--name", "--", "a"}, Wrong("--name needs a value")},
      {{"fail"}, Wrong("--why is missing")},
      {{"fail", "--why", "\"a\xFF"}, "3 tool: error 5: \"a\xFF\n"},
      {{"fail", "--json", "--why", "\"a\xFF"},
       "3 {\"error\":\"\\\"a\xEF\xBF\xBD\"}\ntool: \"a\xFF\n"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ResultOf(c.arguments), c.result) << testing::PrintToString(c.arguments);
}

TEST(Tools, ProgressShowsShareRateAndRestAndNothingUnlessSomebodyWatches) {
  ScopedPorts ports;
  HandClock clock;
  ports->clock = &clock;
  for (const bool is_shown : {true, false}) {
    testing::internal::CaptureStderr();
    {
      tools::Progress progress(is_shown);
      progress.BeginBytes("files", 400 << 20);
      clock.Sleep(100);
      progress.Advance(100);  // too early for a new line
      clock.Sleep(1900);
      progress.Advance((100 << 20) - 100);
      progress.Begin("parts", 9000);
      clock.Sleep(4000);
      progress.Advance();
      clock.Sleep(100);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              is_shown ? "\rfiles: 0 %\x1B[K\rfiles: 25 %, 50 MB/s, 0:06 left\x1B[K\r\x1B[K"
                         "\rparts: 0 %\x1B[K\rparts: 0 %, 0.3/s, 9:59:56 left\x1B[K\r\x1B[K"
                       : "");
  }
}

}  // namespace
}  // namespace tests
