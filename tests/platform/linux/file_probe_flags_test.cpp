#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "ports/file_probe.h"
#include "ports/ports.h"
#include "tests/support/sandbox.h"

namespace {

using ports::Hindrance;

bool SetFlags(const std::string& path, int flags) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const bool is_set = ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
  close(file);
  return is_set;
}

// As containers do with single files: it can be written to, but not be deleted.
TEST(LinuxFileProbe, AFileThatIsMountedCannotBeReplaced) {
  const tests::Sandbox sandbox;
  const std::string source = sandbox.Write("a", "x");
  const std::string file = sandbox.Write("b", "y");
  if (mount(source.c_str(), file.c_str(), nullptr, MS_BIND, nullptr) != 0)
    GTEST_SKIP() << "only root may mount";
  const auto finding =
      ports::CurrentPorts().file_probe->Examine(file, ports::Replacement::kRenameOver);
  EXPECT_EQ(rename(source.c_str(), file.c_str()), -1);
  EXPECT_EQ(errno, finding.code);
  EXPECT_EQ(finding.hindrance, Hindrance::kFailed);
  umount(file.c_str());
}

TEST(LinuxFileProbe, FlagsLocksLinksAndPipesAreSeen) {
  const tests::Sandbox sandbox;
  ports::FileProbe& probe = *ports::CurrentPorts().file_probe;
  const std::string pipe = sandbox.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(probe.Examine(pipe, ports::Replacement::kRemoval).hindrance, Hindrance::kOther);
  const std::string link = sandbox.Path("link");
  ASSERT_EQ(symlink("/", link.c_str()), 0);
  EXPECT_EQ(probe.Examine(link, ports::Replacement::kRemoval).hindrance, Hindrance::kNone)
      << "the link itself is replaced";
  const std::string file = sandbox.Write("файл", "x");
  const int holder = open(file.c_str(), O_RDWR | O_CLOEXEC);
  struct flock one_byte {};
  one_byte.l_type = F_RDLCK;
  one_byte.l_start = 7;
  one_byte.l_len = 1;
  ASSERT_EQ(fcntl(holder, F_OFD_SETLK, &one_byte), 0);
  EXPECT_EQ(probe.Examine(file, ports::Replacement::kRemoval).hindrance, Hindrance::kHeld);
  close(holder);
  EXPECT_EQ(probe.Examine(file, ports::Replacement::kRemoval).hindrance, Hindrance::kNone);
  for (const int flag : {FS_IMMUTABLE_FL, FS_APPEND_FL}) {
    if (!SetFlags(file, flag)) GTEST_SKIP() << "only root may set these flags, on some disks";
    EXPECT_EQ(probe.Examine(file, ports::Replacement::kRenameOver).hindrance,
              Hindrance::kProtected);
    EXPECT_EQ(unlink(file.c_str()), -1);
    EXPECT_EQ(probe.MeaningOf(errno), Hindrance::kProtected);
    ASSERT_TRUE(SetFlags(file, 0));
  }
}

}  // namespace
