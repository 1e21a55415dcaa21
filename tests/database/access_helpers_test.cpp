#include "database/access_helpers.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/program_error.h"
#include "ports/ports.h"
#include "services/product_settings.h"
#include "tests/fakes/memory_settings.h"
#include "tests/support/caught.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace {

namespace utils = tmw::database_utils;

TEST(AccessHelpers, OpenTheUserDatabaseOnceAndNameWhatFailed) {
  const tests::Sandbox sandbox;
  const tests::ScopedPorts ports;
  tests::MemorySettings settings;
  settings.Set(ports::SettingsRoot::kMachine,
               "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\DataBasePath", sandbox.Path());
  ports->settings = &settings;
  tmw::ForgetProductPaths();
  EXPECT_EQ(utils::GetUserDBFileName(), sandbox.Path("Tamrin.mdb"));
  EXPECT_EQ(tests::Caught([] { utils::GetCachedUserDB(); }).Number, 3024);

  ports->database->CreateDatabase(utils::GetUserDBFileName())->Close();
  const ports::Database* const first = &utils::GetCachedUserDB();
  EXPECT_NO_THROW(utils::GetUserDB()) << "the cached one is shared";
  utils::TmExecuteSql("create table T (a long)");
  utils::TmExecuteSql("insert into T values (2)");
  utils::TmExecuteSql("insert into T values (1)");
  EXPECT_EQ(&utils::GetCachedUserDB(), first);

  const tmw::ProgramError bad = tests::Caught([] { utils::TmExecuteSql("update U set a = 1"); });
  EXPECT_EQ(bad.Number, 3078);
  EXPECT_NE(bad.Source.find("::mTmDaoDataBaseForUtils.TmExecuteSql] {Запрос, вызвавший ошибку: "
                            "\r\nupdate U set a = 1}\r\n["),
            std::string::npos)
      << bad.Source;

  const auto rows = utils::OpenTableRecordset("T", "");
  EXPECT_EQ(rows->Value(0), ports::DatabaseValue(std::int32_t{2}));
  const tmw::ProgramError no_index = tests::Caught([] { utils::OpenTableRecordset("T", "Нет"); });
  EXPECT_EQ(no_index.Number, 3015);
  EXPECT_NE(no_index.Source.find("{Таблица: T, Индекс: Нет}"), std::string::npos);

  utils::TmExecuteSql("delete from T");
  const auto none = utils::OpenTableRecordset("T", "");
  EXPECT_NO_THROW(utils::SafeMoveFirst(*none));
  EXPECT_TRUE(none->AtEnd());
  utils::CloseCachedUserDB();
  EXPECT_EQ(tests::Caught([&] { utils::SafeMoveFirst(*none); }).Number, 3420);
  tmw::ForgetProductPaths();
}

}  // namespace
