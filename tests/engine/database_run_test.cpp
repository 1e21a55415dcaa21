#include <filesystem>

#include "database/table_export.h"
#include "engine/user_database.h"
#include "tests/engine/run_fixture.h"
#include "tests/fakes/faulty_file_system.h"

namespace tests {
namespace {

using Log = std::vector<std::string>;

std::string Script(const std::string& from, const std::string& to, const std::string& sql) {
  return "<?xml version=\"1.0\"?><TMW_Database_Update db_version_from=\"" + from +
         "\" db_version_to=\"" + to + "\"><Action type=\"sql\">" + sql +
         "</Action></TMW_Database_Update>";
}

// An installation with a database of its own, and a release two versions ahead.
class DatabaseRunTest : public RunTest {
 protected:
  DatabaseRunTest() {
    SetMode(false);
    Execute(
        Path("db/Tamrin.mdb"),
        {"create table DBVersion (MajorVersion long, MinorVersion long, BuildNumber long)",
         "insert into DBVersion values (3, 6, 0)", "create table Banks (Код long, Имя text(20))",
         "insert into Banks values (1, 'Банк')", "create table Книга (Ид long, Сумма currency)",
         "insert into Книга values (1, 10.5)", "insert into Книга values (2, -3)",
         "create table Заметки (Ид long)", "insert into Заметки values (7)"});
    release_.version = "3.6.2.0";
    release_.files = {{"help.txt", "new help", "{p}"}};
    release_.dict = "Banks";
    release_.dict_text =
        "Table:Banks\r\nField:Код|Long|4\r\nField:Имя|Text|30\r\nRows\r\n1|SБанк\r\n2|SБанк "
        "№2\r\nEndRows\r\nEndTable\r\n";
    release_.user = "Книга";
    release_.structures = {{"Книга.tablestruct",
                            "Table:\xCA\xED\xE8\xE3\xE0\r\nField:\xC8\xE4|Long|4\r\nEndTable\r\n"}};
    release_.scripts = {
        {"1.xml", Script("3.6.0", "3.6.1", "alter table Книга add column Год long")},
        {"2.xml", Script("3.6.1", "3.6.2", "update Книга set Год = 2000 + Ид")}};
  }

  static void Execute(const std::string& path, const Log& statements) {
    const auto database = platform::CurrentPorts().database->OpenDatabase(path, true, false);
    for (const std::string& statement : statements)
      database->Execute(statement, true);
  }

  // The rows of a table of a database below the sandbox, "|" between them.
  std::string Rows(const std::string& path, const std::string& table) const {
    const auto database = platform::CurrentPorts().database->OpenDatabase(Path(path), true, true);
    const std::string text = tmw::ExportTableToString(table, false, database.get());
    const auto start = text.find("Rows\r\n") + 6;
    return text.substr(start, text.find("EndRows") - start);
  }
};

const std::string kNewBook = "1|10.5|2001\r\n2|-3|2002\r\n";

TEST_F(DatabaseRunTest, BothDatabasesAreBuiltAndPlacedAndTheOldOneIsBackedUp) {
  std::filesystem::create_directories(ToPath(Path("db/DBUpdates")));
  sandbox_.Write("db/DBUpdates/1.xml", "old");
  sandbox_.Write("db/Tamrin_LastVer.mdb", "old");
  Publish();
  Run();
  ASSERT_TRUE(updated_) << front_end_.log.back();
  EXPECT_EQ(Rows("db/Tamrin.mdb", "DBVersion"), "3|6|2\r\n");
  EXPECT_EQ(Rows("db/Tamrin.mdb", "Книга"), kNewBook);
  EXPECT_EQ(Rows("db/Tamrin.mdb", "Banks"), "1|SБанк\r\n2|SБанк №2\r\n");
  EXPECT_EQ(Rows("db/Tamrin.mdb", "Заметки"), "7\r\n");
  EXPECT_EQ(Rows("db/Tamrin_LastVer.mdb", "DBVersion"), "3|6|2\r\n");
  EXPECT_EQ(Rows("db/Tamrin_LastVer.mdb", "Книга"), "");
  EXPECT_EQ(Rows("db/Tamrin_LastVer.mdb", "Banks"), "1|SБанк\r\n2|SБанк №2\r\n");
  EXPECT_THROW(Rows("db/Tamrin_LastVer.mdb", "Заметки"), tmw::ProgramError);
  EXPECT_EQ(sandbox_.Read("db/Tamrin_0.zip").substr(0, 2), "PK");
  EXPECT_EQ(sandbox_.Read("db/DBUpdates/1.xml"), release_.scripts[0].second);
  EXPECT_TRUE(sandbox_.Has("db/DBUpdates/2.xml"));
  EXPECT_FALSE(sandbox_.Has("db/Tamrin.mdb.new"));
  EXPECT_FALSE(sandbox_.Has("tmp/TMW_WebUpdate"));
  std::string told;
  for (const std::string& line : listener_.log) {
    if (line == "icon dbnew") told.clear();
    if (line != "main " && line != "sub " && !line.starts_with("range ")) told += line + "; ";
  }
  EXPECT_EQ(
      told,
      "icon dbnew; main Формирование справочной базы данных...; sub Копирование существующей "
      "базы...; sub Открытие базы данных...; sub Удаление устаревших таблиц...; sub Импорт "
      "справочника Banks ...; sub Создание таблицы Книга ...; sub Сохранение номера версии...; sub "
      "Сжатие базы данных...; icon dbgear; main Обновление рабочей базы данных...; sub Создание "
      "временной копии базы данных...; sub Открытие базы данных...; sub Импорт справочника Banks "
      "...; sub Чтение сценариев обновления...; sub Выполнение сценария обновления 3.6.0 -> 3.6.1 "
      "...; sub Выполнение сценария обновления 3.6.1 -> 3.6.2 ...; sub Сжатие базы данных...; icon "
      "trash; mode 0; main Удаление старых компонент...; sub help.txt; icon install; main "
      "Установка новых компонент...; sub help.txt; icon dbgear; main Резервное копирование базы "
      "данных...; main Установка обновленной базы данных...; sub Установка справочной базы "
      "данных...; sub Установка рабочей базы данных...; sub Установка скриптов обновления...; icon "
      "brush; main Удаление временных файлов...; mode 2; ");
  EXPECT_EQ(clock_.sleeps, (std::vector<std::int32_t>{1000, 1000}));
  EXPECT_EQ(Run().size(), 1U) << "nothing is left to do";
  EXPECT_FALSE(updated_);
}

// Whatever change of the disk is the last one before the process dies, the rows are whole in the
// old file or in the new one, and the next run ends with the new one.
TEST_F(DatabaseRunTest, AnInterruptedReplacementIsMendedAtEveryMoment) {
  const std::string database = Path("db/Tamrin.mdb");
  const std::string kept = sandbox_.Write("kept", sandbox_.Read("db/Tamrin.mdb"));
  const std::string built = Path("built");
  platform::FileSystem& real = *ports_->files;
  class Silent final : public tmw::BuildEvents {
    void SetMainAction(const std::string& /*text*/) override {}
    void SetSubAction(const std::string& /*text*/) override {}
    void SetupProgress(std::int32_t /*max*/, bool /*show_count*/) override {}
    void SetProgress(std::int32_t /*value*/) override {}
    bool CancelPressed() override { return false; }
    void DownloadError(const std::string& message) override { ADD_FAILURE() << message; }
  } events;
  int old_left = 0;
  int absent = 0;
  int replaced = 0;
  bool is_done = false;
  for (std::size_t allowed = 0; !is_done; ++allowed) {
    ASSERT_LT(allowed, 100U);
    tmw::CopyFile(kept, database);
    tmw::CopyFile(kept, built);
    const auto counted = tmw::CountUserRows().value();
    Execute(built, {"update DBVersion set BuildNumber = 2", "insert into Заметки values (8)"});
    FaultyFileSystem dying(real);
    dying.changes_left = allowed;
    ports_->files = &dying;
    try {
      is_done = tmw::ReplaceUserDatabase(built, {3, 6, 2}, counted, events);
    } catch (const tmw::ProgramError&) {
      is_done = false;
    }
    ports_->files = &real;
    if (!sandbox_.Has("db/Tamrin.mdb")) {
      EXPECT_EQ(Rows("db/Tamrin.mdb.new", "Заметки"), "7\r\n8\r\n") << allowed;
      ++absent;
    } else {
      const std::string rows = Rows("db/Tamrin.mdb", "Заметки");
      (rows == "7\r\n" ? old_left : replaced) += 1;
      EXPECT_TRUE(rows == "7\r\n" || rows == "7\r\n8\r\n") << allowed;
    }
    tmw::MendUserDatabase();
    tmw::ForgetUnusedCopy();
    EXPECT_NO_THROW(Rows("db/Tamrin.mdb", "Книга")) << allowed;
    EXPECT_FALSE(sandbox_.Has("db/Tamrin.mdb.new")) << allowed;
  }
  EXPECT_GT(old_left, 3);
  EXPECT_EQ(absent, 1);
  EXPECT_GT(replaced, 1);
  EXPECT_EQ(Rows("db/Tamrin.mdb", "DBVersion"), "3|6|2\r\n");
}

TEST_F(DatabaseRunTest, ARunInterruptedWhilePlacingIsFinishedByTheNextOne) {
  Publish();
  // The old reference database cannot be deleted: a folder of that name is no file.
  sandbox_.Write("db/Tamrin_LastVer.mdb/x", "");
  ASSERT_EQ(Run().size(), 2U);
  EXPECT_FALSE(updated_);
  EXPECT_EQ(Rows("db/Tamrin.mdb", "DBVersion"), "3|6|0\r\n");
  std::filesystem::remove_all(ToPath(Path("db/Tamrin_LastVer.mdb")));
  // As if the run had got as far as between the old database and the new one.
  std::filesystem::rename(ToPath(Path("tmp/TMW_WebUpdate/R 3.6.0.2/DBUpdates/Tamrin.mdb")),
                          ToPath(Path("db/Tamrin.mdb.new")));
  std::filesystem::remove(ToPath(Path("db/Tamrin.mdb")));
  front_end_.answers = {true};
  Run();
  ASSERT_TRUE(updated_) << front_end_.log.back();
  EXPECT_EQ(Rows("db/Tamrin.mdb", "Книга"), kNewBook);
  EXPECT_EQ(Rows("db/Tamrin_LastVer.mdb", "DBVersion"), "3|6|2\r\n");
  EXPECT_TRUE(sandbox_.Has("db/Tamrin_0.zip"));
}

}  // namespace
}  // namespace tests
