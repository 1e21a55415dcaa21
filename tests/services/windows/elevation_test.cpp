#include <gtest/gtest.h>

#include "services/processes.h"
#include "tests/support/processes.h"

namespace tmw {
namespace {

TEST(Elevation, TheShellStartsTheProgramInItsFolderAndGivesItsExitCode) {
  const tests::Sandbox sandbox;
  const std::string program = "\"" + tests::ChildProgram() + "\" ";
  const std::string report = "report \"" + sandbox.Path("out") + "\" \"а б\"";
  EXPECT_EQ(RunProcessInElevationMode("", program + report, sandbox.Path(), true), 0);
  EXPECT_EQ(sandbox.Read("out"), sandbox.Path() + "\n\nа б\n");
  EXPECT_EQ(RunProcessInElevationMode("", program + "sleep 700 exit 7", "", true), 7);
}

}  // namespace
}  // namespace tmw
