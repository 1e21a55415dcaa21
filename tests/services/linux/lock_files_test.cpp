#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

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
  const tests::ScopedVariable folder("TMW_LOCK_FOLDER", sandbox.Path());
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

TEST(LockFiles, LieInTheUsersHomeWhateverTheSessionSays) {
  const tests::Sandbox sandbox;
  const std::string folder = "/.local/state/tamrin/locks";
  for (const char* const name : {"XDG_RUNTIME_DIR", "XDG_STATE_HOME", "TMPDIR", "HOME"}) {
    const tests::ScopedVariable variable(name, sandbox.Path());
    EXPECT_EQ(ports::CurrentPorts().mutexes->Place(), getpwuid(geteuid())->pw_dir + folder) << name;
  }
  // With the rights of root the user who asked for them counts.
  const passwd other = *getpwnam("daemon");
  const tests::ScopedVariable first_user("PKEXEC_UID", std::to_string(other.pw_uid));
  const std::string home = geteuid() == 0 ? other.pw_dir : getpwuid(geteuid())->pw_dir;
  EXPECT_EQ(ports::CurrentPorts().mutexes->Place(), home + folder);
  // Whose home is a folder of the system: nothing is made there with more rights than they have.
  if (geteuid() == 0) {
    EXPECT_EQ(ports::CurrentPorts().mutexes->Prepare().code, EACCES);
    EXPECT_EQ(geteuid(), 0U);
  }
}

TEST(LockFiles, AFolderThatOthersCouldHavePreparedIsAnErrorThatNamesIt) {
  const struct {
    const char* what;
    std::function<void(const std::string& folder)> prepare;
    int code;  // 0: accepted
  } cases[] = {
      {"missing", [](const std::string&) {}, 0},
      {"readable", [](const std::string& folder) { mkdir(folder.c_str(), 0755); }, 0},
      {"open",
       [](const std::string& folder) { mkdir(folder.c_str(), 0), chmod(folder.c_str(), 0770); },
       EPERM},
      {"somebody else's",
       [](const std::string& folder) {
         mkdir(folder.c_str(), 0700);
         if (chown(folder.c_str(), 65534, 65534) != 0) chmod(folder.c_str(), 0777);
       },
       EPERM},
      {"a link",
       [](const std::string& folder) {
         mkdir((folder + "2").c_str(), 0700);
         EXPECT_EQ(symlink((folder + "2").c_str(), folder.c_str()), 0);
       },
       ENOTDIR},
      {"a file", [](const std::string& folder) { close(creat(folder.c_str(), 0600)); }, ENOTDIR},
  };
  for (const auto& c : cases) {
    const tests::Sandbox sandbox;
    const std::string folder = sandbox.Path("locks");
    const tests::ScopedVariable variable("TMW_LOCK_FOLDER", folder);
    c.prepare(folder);
    if (c.code == 0) {
      EXPECT_TRUE(WaitUntilAppMutexClosed("Local\\X", "X")) << c.what;
      ASSERT_TRUE(LockUpdaterMutex("Local\\X")) << c.what;
      ReleaseUpdaterLock();
      struct stat facts {};
      ASSERT_EQ(stat(folder.c_str(), &facts), 0);
      EXPECT_EQ(facts.st_mode & 0777U, 0700U) << c.what;
      EXPECT_TRUE(sandbox.Has("locks/X.lock")) << c.what;
      continue;
    }
    for (const auto& error : {tests::Caught([] { WaitUntilAppMutexClosed("Local\\X", "X"); }),
                              tests::Caught([] { LockUpdaterMutex("Local\\X"); })}) {
      EXPECT_EQ(error.Number, c.code) << c.what;
      EXPECT_TRUE(error.Description.starts_with(
          "Папку блокировок \"" + folder +
          "\" создать или использовать нельзя: она должна принадлежать текущему пользователю и "
          "быть закрытой для остальных:\r\n"))
          << error.Description;
    }
  }
}

}  // namespace
}  // namespace tmw
