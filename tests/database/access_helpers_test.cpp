#include "database/access_helpers.h"

#include "foundation/file_names.h"
#include "foundation/program_error.h"
#include "tests/database/build_fixture.h"
#include "tests/support/caught.h"

namespace tests {
namespace {

namespace utils = tmw::database_utils;

TEST_F(BuildTest, TheUserDatabaseIsOpenedOnceAndWhatFailedIsNamed) {
  EXPECT_EQ(utils::GetUserDBFileName(), tmw::JoinPath(sandbox.Path("db"), "Tamrin.mdb"));
  std::filesystem::remove(ToPath(sandbox.Path("db/Tamrin.mdb")));
  EXPECT_EQ(Caught([] { utils::GetCachedUserDB(); }).Number, 3024);

  ports->database->CreateDatabase(utils::GetUserDBFileName())->Close();
  const ports::Database* const first = &utils::GetCachedUserDB();
  EXPECT_NO_THROW(utils::GetUserDB()) << "the cached one is shared";
  utils::TmExecuteSql("create table T (a long)");
  utils::TmExecuteSql("insert into T values (2)");
  utils::TmExecuteSql("insert into T values (1)");
  EXPECT_EQ(&utils::GetCachedUserDB(), first);

  const tmw::ProgramError bad = Caught([] { utils::TmExecuteSql("update U set a = 1"); });
  EXPECT_EQ(bad.Number, 3078);
  EXPECT_NE(bad.Source.find("::mTmDaoDataBaseForUtils.TmExecuteSql] {Запрос, вызвавший ошибку: "
                            "\r\nupdate U set a = 1}\r\n["),
            std::string::npos)
      << bad.Source;

  const auto rows = utils::OpenTableRecordset("T", "");
  EXPECT_EQ(rows->Value(0), ports::DatabaseValue(std::int32_t{2}));
  const tmw::ProgramError no_index = Caught([] { utils::OpenTableRecordset("T", "Нет"); });
  EXPECT_EQ(no_index.Number, 3015);
  EXPECT_NE(no_index.Source.find("{Таблица: T, Индекс: Нет}"), std::string::npos);

  utils::TmExecuteSql("delete from T");
  const auto none = utils::OpenTableRecordset("T", "");
  EXPECT_NO_THROW(utils::SafeMoveFirst(*none));
  EXPECT_TRUE(none->AtEnd());
  utils::CloseCachedUserDB();
  EXPECT_EQ(Caught([&] { utils::SafeMoveFirst(*none); }).Number, 3420);
}

}  // namespace
}  // namespace tests
