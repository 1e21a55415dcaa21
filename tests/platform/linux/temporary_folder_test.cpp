#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

#include "foundation/file_utils.h"
#include "tests/support/caught.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"

namespace tmw {
namespace {

constexpr uid_t kSomebody = 65534;

void MakeFolder(const std::string& path, mode_t mode) {
  mkdir(path.c_str(), 0700);
  EXPECT_EQ(chmod(path.c_str(), mode), 0);
}

TEST(TemporaryFolder, IsTheUsersOwnWhereOthersMayWrite) {
  const std::string own = "tamrin-" + std::to_string(geteuid());
  const struct {
    const char* what;
    const char* variable;
    std::function<void(const tests::Sandbox& sandbox)> prepare;
    std::string expected;
    int code = 0;
  } cases[] = {
      {"nobody else writes", "TMPDIR", [](const tests::Sandbox&) {}, "t"},
      {"the group writes", "TMPDIR", [](const auto& s) { chmod(s.Path("t").c_str(), 0770); },
       "t/" + own},
      {"it is there", "TMPDIR",
       [&](const auto& s) {
         chmod(s.Path("t").c_str(), 01777);
         MakeFolder(s.Path("t/" + own), 0755);
       },
       "t/" + own},
      {"it is not there yet", "TMPDIR",
       [](const auto& s) {
         rmdir(s.Path("t").c_str());
         chmod(s.Path().c_str(), 01777);
       },
       own},
      {"the cache", "XDG_CACHE_HOME", [](const auto&) {}, "t/tamrin"},
      {"an open cache", "XDG_CACHE_HOME", [](const auto& s) { chmod(s.Path("t").c_str(), 01777); },
       "t/" + own},
      {"somebody may have filled it", "TMPDIR",
       [&](const auto& s) {
         chmod(s.Path("t").c_str(), 01777);
         MakeFolder(s.Path("t/" + own), 0707);
       },
       "t/" + own, EPERM},
      {"somebody else's", "TMPDIR",
       [&](const auto& s) {
         chmod(s.Path("t").c_str(), 01777);
         MakeFolder(s.Path("t/" + own), 0700);
         if (chown(s.Path("t/" + own).c_str(), kSomebody, kSomebody) != 0)
           chmod(s.Path("t/" + own).c_str(), 0777);
       },
       "t/" + own, EPERM},
      {"a link", "TMPDIR",
       [&](const auto& s) {
         chmod(s.Path("t").c_str(), 01777);
         MakeFolder(s.Path("elsewhere"), 0700);
         EXPECT_EQ(symlink(s.Path("elsewhere").c_str(), s.Path("t/" + own).c_str()), 0);
       },
       "t/" + own, ENOTDIR},
      {"the folder of a user whom root must not trust", "TMPDIR",
       [](const auto& s) {
         if (geteuid() != 0) chmod(s.Path("t").c_str(), 0770);
         EXPECT_EQ(geteuid() == 0 ? chown(s.Path("t").c_str(), kSomebody, kSomebody) : 0, 0);
       },
       "t/" + own},
  };
  for (const auto& c : cases) {
    const tests::Sandbox sandbox;
    MakeFolder(sandbox.Path("t"), 0755);
    const tests::ScopedVariable temporary("TMPDIR", "");
    const tests::ScopedVariable variable(c.variable, sandbox.Path("t"));
    c.prepare(sandbox);
    const std::string expected = sandbox.Path(c.expected);
    if (c.code != 0) {
      const auto error = tests::Caught([] { GetTemporaryFolder(); });
      EXPECT_EQ(error.Number, c.code) << c.what;
      EXPECT_TRUE(error.Description.starts_with(
          "Временную папку \"" + expected +
          "\" использовать нельзя: она должна принадлежать текущему пользователю и быть закрытой "
          "для остальных:\r\n"))
          << c.what << error.Description;
      continue;
    }
    EXPECT_EQ(GetTemporaryFolder(), expected) << c.what;
    struct stat facts {};
    if (!c.expected.ends_with(own)) continue;
    ASSERT_EQ(lstat(expected.c_str(), &facts), 0) << c.what;
    EXPECT_EQ(facts.st_mode, static_cast<mode_t>(S_IFDIR | 0700)) << c.what;
    EXPECT_EQ(facts.st_uid, geteuid()) << c.what;
  }
}

}  // namespace
}  // namespace tmw
