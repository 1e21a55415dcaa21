#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/jet/database_fixture.h"
#include "tests/support/linux/small_files_only.h"

namespace {

using FullDiskTest = tests::DatabaseTest;

TEST_F(FullDiskTest, NothingOfATransactionThatTheDiskEndedIsCommitted) {
  ASSERT_EQ(Run("create table T (Ид long primary key, М memo)"), 0);
  ASSERT_EQ(Run("insert into T values (1, 'старое')"), 0);
  const std::string insert = "insert into T values (3, '" + std::string(60000, 'x') + "' & '" +
                             std::string(60000, 'y') + "')";
  {
    const tests::SmallFilesOnly limit(std::filesystem::file_size(tests::ToPath(path)) + 50000);
    EXPECT_NE(Run(insert), 0) << "outside of a transaction";
    EXPECT_EQ(Query("select Ид from T"), "Long 1");

    engine->BeginTrans();
    engine->BeginTrans();
    EXPECT_EQ(Run("update T set М = 'новое'"), 0);
    EXPECT_EQ(Run("insert into T values (2, 'малое')"), 0);
    // More than SQLite caches in memory.
    std::int32_t error = 0;
    for (int i = 10; i < 400 && error == 0; ++i)
      error = Run("insert into T values (" + std::to_string(i) + insert.substr(insert.find(',')));
    EXPECT_TRUE(error == 3026 || error == 3043) << error;
    const std::int32_t next = Run("insert into T values (4, 'x')");
    const std::int32_t commit = tests::ErrorOf([&] { engine->CommitTrans(); });
    EXPECT_EQ(next, 3043);
    EXPECT_EQ(commit, 3043);
    if (commit != 0) engine->Rollback();
    engine->Rollback();
  }
  EXPECT_EQ(Query("select Ид, М from T"), "Long 1, Text старое");
  EXPECT_EQ(Run(insert), 0);
  const std::string copy = sandbox.Path("копия");
  db->Close();
  {
    const tests::SmallFilesOnly limit(20000);
    EXPECT_NE(tests::ErrorOf([&] { engine->CompactDatabase(path, copy); }), 0);
  }
  EXPECT_FALSE(sandbox.Has("копия"));
  engine->CompactDatabase(path, copy);
  db = engine->OpenDatabase(copy, true, true);
  EXPECT_EQ(Query("select count(*) from T"), "Long 2");
}

}  // namespace
