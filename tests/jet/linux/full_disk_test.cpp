#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/jet/database_fixture.h"
#include "tests/support/linux/small_files_only.h"

namespace {

using tests::ErrorOf;

class FullDiskTest : public tests::DatabaseTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(Run("create table T (Ид long primary key, М memo)"), 0);
    ASSERT_EQ(Run("insert into T values (1, 'старое')"), 0);
  }

  std::int32_t InsertMuch(int id) const {
    return Run("insert into T values (" + std::to_string(id) + ", '" + std::string(60000, 'x') +
               "' & '" + std::string(60000, 'y') + "')");
  }
};

bool IsOfTheDisk(std::int32_t error) {
  return error == ports::kDiskFull || error == ports::kDiskError;
}

TEST_F(FullDiskTest, NothingOfATransactionThatTheDiskEndedIsCommitted) {
  {
    const tests::SmallFilesOnly limit(50000);
    engine->BeginTrans();
    engine->BeginTrans();
    EXPECT_EQ(Run("update T set М = 'новое'"), 0);
    // More than the storage holds back in memory.
    std::int32_t error = 0;
    for (int i = 10; i < 400 && error == 0; ++i)
      error = InsertMuch(i);
    EXPECT_TRUE(IsOfTheDisk(error)) << error;
    const std::int32_t next = Run("insert into T values (4, 'x')");
    const std::int32_t commit = ErrorOf([&] { engine->CommitTrans(); });
    EXPECT_EQ(next, 3043);
    EXPECT_EQ(commit, 3043);
    if (commit != 0) engine->Rollback();
    engine->Rollback();
  }
  EXPECT_EQ(Query("select Ид, М from T"), "Long 1, Text старое");
  EXPECT_EQ(InsertMuch(2), 0);
}

TEST_F(FullDiskTest, AFileThatCannotBeWrittenStaysAsItWasUntilASecondTry) {
  db->Close();
  const std::string old = sandbox.Read("база.mdb");
  db = engine->OpenDatabase(path, true, false);
  ASSERT_EQ(InsertMuch(2), 0);
  {
    const tests::SmallFilesOnly limit(100000);
    const std::int32_t error = ErrorOf([&] { db->Close(); });
    EXPECT_TRUE(IsOfTheDisk(error)) << error;
  }
  EXPECT_EQ(sandbox.Read("база.mdb"), old);
  EXPECT_FALSE(sandbox.Has("база.mdb.writing"));
  EXPECT_EQ(ErrorOf([&] { engine->OpenDatabase(path, false, true); }), 3356);
  EXPECT_EQ(Query("select count(*) from T"), "Long 2");
  db->Close();

  const std::string copy = sandbox.Path("копия");
  {
    const tests::SmallFilesOnly limit(20000);
    EXPECT_TRUE(IsOfTheDisk(ErrorOf([&] { engine->CompactDatabase(path, copy); })));
  }
  EXPECT_FALSE(sandbox.Has("копия"));
  engine->CompactDatabase(path, copy);
  db = engine->OpenDatabase(copy, true, true);
  EXPECT_EQ(Query("select count(*) from T"), "Long 2");
}

}  // namespace
