#include "database/working_db.h"
#include "tests/database/build_fixture.h"
#include "tests/support/linux/small_files_only.h"

namespace tests {
namespace {

using FullDiskTest = BuildTest;

TEST_F(FullDiskTest, ABuildThatFindsNoRoomFailsAndIsNotTakenForAFailingStatement) {
  std::string sql = "update T set Имя = '" + std::string(40, 'y') +
                    "'; create table Д (М memo); "
                    "insert into Д values ('" +
                    std::string(500, 'x') + "');";
  for (int i = 0; i < 12; ++i)
    sql += "update Д set М = М &amp; М;";
  sandbox.Write("DBUpdates/1.xml",
                "<?xml version=\"1.0\"?><TMW_Database_Update db_version_from=\"1.0.0\" "
                "db_version_to=\"1.2.0\"><Action type=\"sql\" SuppressErrors=\"yes\">" +
                    sql + "</Action></TMW_Database_Update>");
  const std::string user_database = sandbox.Read("db/Tamrin.mdb");
  {
    const SmallFilesOnly limit(user_database.size() + 100000);
    EXPECT_FALSE(tmw::BuildWorkingDB(build, *this));
  }
  ASSERT_EQ(front_end.log.size(), 1U);
  EXPECT_TRUE(front_end.log[0].starts_with(
      "warning|Ошибка|Ошибка обновления базы данных до версии \"1.2.0\":\r\n"));
  {
    const SmallFilesOnly limit(20000);
    EXPECT_THROW(tmw::BuildWorkingDB(build, *this), std::exception);
  }
  EXPECT_EQ(sandbox.Read("db/Tamrin.mdb"), user_database);
  EXPECT_TRUE(tmw::BuildWorkingDB(build, *this)) << "with room again";
}

}  // namespace
}  // namespace tests
