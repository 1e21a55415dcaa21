#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/jet/database_fixture.h"

namespace {

namespace fs = std::filesystem;
using tests::ErrorOf;
using tests::ToPath;

using LinuxContainerTest = tests::DatabaseTest;

TEST_F(LinuxContainerTest, RightsAndLinksOutliveTheFile) {
  db->Close();
  constexpr auto kRights = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
  fs::permissions(ToPath(path), kRights);
  const std::string link = sandbox.Path("ссылка.mdb");
  fs::create_symlink("база.mdb", ToPath(link));
  db = engine->OpenDatabase(link, true, false);
  ASSERT_EQ(Run("create table T (a long)"), 0);
  db->Close();
  EXPECT_TRUE(fs::is_symlink(ToPath(link)));
  EXPECT_FALSE(fs::is_symlink(ToPath(path)));
  EXPECT_EQ(fs::status(ToPath(path)).permissions(), kRights);
  engine->CompactDatabase(link, sandbox.Path("сжатая.mdb"));
  EXPECT_EQ(fs::status(ToPath(sandbox.Path("сжатая.mdb"))).permissions(), kRights);

  fs::permissions(ToPath(path), fs::perms::owner_read);
  db = engine->OpenDatabase(path, true, false);
  EXPECT_EQ(Run("drop table T"), 3027);
}

TEST_F(LinuxContainerTest, AFileThatIsExchangedBehindTheLockIsNotOverwritten) {
  db->Close();
  const std::string old = sandbox.Read("база.mdb");
  db = engine->OpenDatabase(path, true, false);
  ASSERT_EQ(Run("create table T (a long)"), 0);
  fs::rename(ToPath(sandbox.Write("другая.mdb", old)), ToPath(path));
  EXPECT_EQ(ErrorOf([&] { db->Close(); }), 3218);
  EXPECT_EQ(sandbox.Read("база.mdb"), old);
  EXPECT_FALSE(sandbox.Has("база.mdb.writing"));

  db = engine->OpenDatabase(path, false, false);
  fs::rename(ToPath(sandbox.Write("другая.mdb", old)), ToPath(path));
  EXPECT_EQ(Run("create table T (a long)"), 3218);
}

}  // namespace
