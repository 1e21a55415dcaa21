#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ports/processes.h"
#include "services/processes.h"
#include "tests/support/caught.h"
#include "tests/support/environment.h"
#include "tests/support/processes.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

// A pkexec that asks nothing, found first in PATH; like the real one it passes no descriptor on.
class Elevation : public testing::Test {
 protected:
  void Answer(const std::string& script) const {
    chmod(sandbox_.Write("pkexec", "#!/bin/sh\n" + script + "\n").c_str(), 0755);
  }

  tests::Sandbox sandbox_;
  tests::ScopedVariable path_{"PATH", sandbox_.Path() + ":/usr/bin:/bin"};
};

TEST_F(Elevation, AnAgreedStartRunsTheProgramInItsFolder) {
  Answer("[ \"$1\" = --keep-cwd ] && shift\nexec \"$@\" 3>&-");
  const std::string line =
      "\"" + tests::ChildProgram() + "\" report \"" + sandbox_.Path("out") + "\" \"a b\"";
  EXPECT_EQ(RunProcessInElevationMode("", line, sandbox_.Path(), true), 0);
  EXPECT_EQ(sandbox_.Read("out"), sandbox_.Path() + "\n\na b\n");
}

TEST_F(Elevation, ADeclinedStartRaises) {
  Answer("sleep 0.2; exit 126");
  const auto error = tests::Caught([] { RunProcessInElevationMode("", "/bin/true x", "", false); });
  EXPECT_EQ(error.Number, ECANCELED);
}

TEST_F(Elevation, IsNeededForAProgramOfAnotherUserOnly) {
  const bool is_root = geteuid() == 0;
  const std::string program = sandbox_.Write("program", "#!/bin/sh\n");
  ports::StartRequest request;
  request.program = program;
  ports::Processes& processes = *ports::CurrentPorts().processes;
  const auto start = [&](mode_t mode) {
    chmod(program.c_str(), mode);
    EXPECT_EQ(is_root ? seteuid(65534) : 0, 0);
    const auto started = processes.Start(request);
    const bool is_needed = !started && processes.NeedsElevation(started.code, request);
    EXPECT_EQ(is_root ? seteuid(0) : 0, 0);
    EXPECT_EQ(started.code, EACCES);
    return is_needed;
  };
  EXPECT_TRUE(start(is_root ? 0700 : 0011));
  EXPECT_FALSE(start(0600));
}

}  // namespace
}  // namespace tmw
