#include <gtest/gtest.h>

#include <chrono>

#include "services/processes.h"
#include "tests/support/environment.h"
#include "tests/support/processes.h"

namespace tmw {
namespace {

// Runs the child program on a terminal of its own (script(1)); gives the exit code a shell sees.
int RunOnTerminal(const std::string& script) {
  const tests::ScopedVariable program("TMW_CHILD", tests::ChildProgram());
  return RunProcess("",
                    "script -qec \"exec ^\"$TMW_CHILD^\" wait-for-chain " + script + "\" /dev/null",
                    "", true, 0);
}

TEST(ChainParent, WaitsForTheWholeChainAndHandsOnTheLastExitCode) {
  const tests::Sandbox sandbox;
  const tests::ScopedVariable marks("MARKS", sandbox.Path("marks"));
  for (const std::string first_ends_by : {"exit 3", "crash 3"}) {
    EXPECT_EQ(RunOnTerminal("chain 400 5 ^\"$MARKS^\" " + first_ends_by), 5);
  }
  EXPECT_EQ(sandbox.Read("marks"), "chain\nchain\n");
  EXPECT_EQ(RunOnTerminal("exit 4"), 4);
}

TEST(ChainParent, DoesNotWaitForTheProduct) {
  const tests::Sandbox sandbox;
  const tests::ScopedVariable marks("MARKS", sandbox.Path("marks"));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(RunOnTerminal("product 20000 0 ^\"$MARKS^\" chain 200 6 ^\"$MARKS^\" exit 0"), 6);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(sandbox.Read("marks"), "chain\n");
}

TEST(ChainParent, WaitsWithoutATerminalToo) {
  const tests::Sandbox sandbox;
  const std::string line = "setsid \"" + tests::ChildProgram() +
                           "\" wait-for-chain chain 200 5 \"" + sandbox.Path("marks") + "\" exit 3";
  const tests::ScopedVariable command("COMMAND", line);
  EXPECT_EQ(RunProcess("", "sh -c \"eval ^\"$COMMAND^\" </dev/null >/dev/null 2>&1\"", "", true, 0),
            5);
  EXPECT_EQ(sandbox.Read("marks"), "chain\n");
}

}  // namespace
}  // namespace tmw
