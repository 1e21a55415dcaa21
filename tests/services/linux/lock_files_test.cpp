#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "services/mutexes.h"
#include "services/processes.h"
#include "tests/fakes/hand_clock.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/caught.h"
#include "tests/support/environment.h"
#include "tests/support/processes.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

TEST(LockFiles, AShellScriptHoldsAMutexWithFlock) {
  const tests::Sandbox sandbox;
  const tests::ScopedVariable folder("XDG_RUNTIME_DIR", sandbox.Path());
  const tests::ScopedPorts ports;
  tests::HandClock clock;
  tests::ScriptedFrontEnd front_end;
  ports->clock = &clock;
  ports->front_end = &front_end;
  const auto script = RunProcess("", "flock -F X.lock sh -c \"echo held > ready; exec sleep 60\"",
                                 sandbox.Path(), false, 0);
  tests::AwaitLine(sandbox, "ready");
  EXPECT_FALSE(WaitUntilAppMutexClosed("Local\\X", "X"));
  tests::KillProcess(script);
  front_end.answers = std::deque<bool>(1000, true);
  EXPECT_TRUE(WaitUntilAppMutexClosed("Local\\X", "X"));
}

TEST(LockFiles, WithoutARunTimeFolderAPrivateOneIsUsedAndChecked) {
  const tests::Sandbox sandbox;
  const std::string user = std::to_string(geteuid());
  if (access(("/run/user/" + user).c_str(), F_OK) == 0) return;  // it comes first, and is real
  const tests::ScopedVariable folder("XDG_RUNTIME_DIR", sandbox.Path("none"));
  const tests::ScopedVariable temporary("TMPDIR", sandbox.Path());
  ASSERT_TRUE(LockUpdaterMutex("Local\\X"));
  ReleaseUpdaterLock();
  const std::string own = sandbox.Path("tamrin-" + user);
  struct stat facts {};
  ASSERT_EQ(stat(own.c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777U, 0700U);
  EXPECT_TRUE(sandbox.Has("tamrin-" + user + "/X.lock"));

  ASSERT_EQ(chmod(own.c_str(), 0777), 0);
  EXPECT_EQ(tests::Caught([] { LockUpdaterMutex("Local\\X"); }).Number, EPERM);
}

}  // namespace
}  // namespace tmw
