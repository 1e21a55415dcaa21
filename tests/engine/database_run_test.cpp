#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>

#include "engine/database_backup.h"
#include "engine/user_database.h"
#include "foundation/api_errors.h"
#include "packages/hash_api.h"
#include "tests/companion/rar_entries.h"
#include "tests/engine/database_run_fixture.h"
#include "tests/fakes/faulty_file_system.h"

#ifndef _WIN32
#include "tests/support/linux/small_files_only.h"
#endif

namespace tests {
namespace {

using Log = std::vector<std::string>;
using Text = std::string;

TEST_F(DatabaseRunTest, BothDatabasesAreBuiltAndPlacedAndTheOldOneIsBackedUp) {
  std::filesystem::create_directories(ToPath(Path("db/DBUpdates")));
  sandbox_.Write("db/Tamrin_LastVer.mdb", "old");
  sandbox_.Write("db/Tamrin_0.zip.7.tmp", "of a killed backup");
  Publish();
  Run();
  ASSERT_TRUE(updated_) << front_end_.log.back();
  EXPECT_EQ(Rows("db/Tamrin.mdb", "Banks"), "1|SБанк\r\n2|SБанк №2\r\n");
  EXPECT_EQ(Rows("db/Tamrin_LastVer.mdb", "Книга"), "");
  EXPECT_EQ(Rows("db/Tamrin_LastVer.mdb", "Banks"), "1|SБанк\r\n2|SБанк №2\r\n");
  EXPECT_THROW(Rows("db/Tamrin_LastVer.mdb", "Заметки"), tmw::ProgramError);
  EXPECT_EQ(sandbox_.Read("db/Tamrin_0.zip").substr(0, 2), "PK");
  EXPECT_FALSE(sandbox_.Has("db/Tamrin_0.zip.7.tmp"));
  EXPECT_TRUE(sandbox_.Has("db/DBUpdates/2.xml"));
  EXPECT_FALSE(sandbox_.Has("tmp/TMW_WebUpdate"));
  std::string shown;
  for (const std::string& line : listener_.log) {
    if (line == "icon dbnew") shown.clear();
    if (line != "main " && line != "sub " && !line.starts_with("range ")) shown += line + "; ";
  }
  EXPECT_EQ(
      shown,
      "icon dbnew; main Формирование справочной базы данных...; sub Копирование существующей "
      "базы...; sub Открытие базы данных...; sub Удаление устаревших таблиц...; sub Импорт "
      "справочника Banks ...; sub Создание таблицы Книга ...; sub Сохранение номера версии...; sub "
      "Сжатие базы данных...; icon dbgear; main Обновление рабочей базы данных...; sub Создание "
      "временной копии базы данных...; sub Открытие базы данных...; sub Импорт справочника Banks "
      "...; sub Чтение сценариев обновления...; sub Выполнение сценария обновления 3.6.0 -> 3.6.1 "
      "...; sub Выполнение сценария обновления 3.6.1 -> 3.6.2 ...; sub Сжатие базы данных...; main "
      "Сохранение предыдущей версии...; sub help.txt; sub Tamrin_LastVer.mdb; sub 1.xml; sub 2.xml; "
      "icon trash; mode 0; awake; main Удаление старых компонент...; sub help.txt; icon install; main "
      "Установка новых компонент...; sub help.txt; icon dbgear; main Резервное копирование базы "
      "данных...; main Установка обновленной базы данных...; sub Установка справочной базы "
      "данных...; sub Установка рабочей базы данных...; sub Установка скриптов обновления...; icon "
      "brush; main Удаление временных файлов...; asleep; mode 2; ");
  EXPECT_EQ(
      listener_.steps,
      "1/6 2/6 3/6 help.txt Banks.table updates.tmz structures.tmz 4/6 3.6.0-3.6.1 3.6.1-3.6.2 "
      "5/6 6/6 ");
  EXPECT_EQ(clock_.sleeps, (std::vector<std::int32_t>{1000, 1000}));
  EXPECT_EQ(Run().size(), 1U) << "nothing is left to do";
  EXPECT_FALSE(updated_);
}

TEST_F(DatabaseRunTest, WhatAnnouncesMoreThanItMayUnpackToIsRefused) {
  const Text folder = "server/TMW_3.6.2.0/";
  for (const Text package : {"Banks.table.tmz", "_PackageManifest.tmz"}) {
    Publish();
    const bool is_table = package.starts_with("Banks");
    constexpr std::uint64_t kMebibytes = 64U << 20U;
    const std::uint64_t limit = is_table ? kMebibytes + std::uint64_t{10} * 64 : kMebibytes;
    EntryHeader entry = FileHeader(is_table ? "Banks.table" : "TMW_manifest.xml", "");
    entry.size = limit + 1;
    sandbox_.Write(folder + package, Archive(RarFormat::kRar5, entry, ""));
    front_end_.answers = {true};
    EXPECT_NE(Run().back().find("Распакованные данные больше допустимого (" +
                                std::to_string(limit) + " байт)."),
              Text::npos)
        << front_end_.log.back();
  }
}

TEST_F(DatabaseRunTest, OnlyAnArchiveOfTodaysDatabaseCountsAsItsBackup) {
  const auto backups = [&] {
    Log names;
    for (const auto& entry : std::filesystem::directory_iterator(ToPath(Path("db"))))
      if (entry.path().extension() != ".mdb") names.push_back(FromPath(entry.path().filename()));
    std::sort(names.begin(), names.end());
    return names;
  };
  const auto allowed = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write |
                       std::filesystem::perms::group_read;
  std::filesystem::permissions(ToPath(Path("db/Tamrin.mdb")), allowed);
  Log expected;
  const struct {
    const char* what;
    std::function<void()> change;
    const char* added;
  } cases[] = {
      {"nothing yet", [] {}, "Tamrin_0.zip"},
      {"a backup", [] {}, nullptr},
      {"an empty file", [&] { sandbox_.Write("db/Tamrin_0.zip", ""); }, "Tamrin_0 (2).zip"},
      {"older books", [&] { Execute(Path("db/Tamrin.mdb"), {"delete from Книга"}); },
       "Tamrin_0 (3).zip"},
      {"a damaged directory",
       [&] {
         std::string zip = sandbox_.Read("db/Tamrin_0 (3).zip");
         zip[zip.size() - 12] ^= 1;  // the number of entries
         sandbox_.Write("db/Tamrin_0 (3).zip", zip);
         std::filesystem::create_directories(ToPath(Path("db/Tamrin_0 (4).zip")));
       },
       "Tamrin_0 (5).zip"},
      {"a backup among others", [] {}, nullptr},
      {"a damaged content",
       [&] {
         std::string zip = sandbox_.Read("db/Tamrin_0 (5).zip");
         zip[zip.size() / 2] ^= 1;
         sandbox_.Write("db/Tamrin_0 (5).zip", zip);
       },
       "Tamrin_0 (6).zip"},
  };
  for (const auto& c : cases) {
    c.change();
    expected = backups();
    EXPECT_TRUE(tmw::PackUserDatabase()) << c.what;
    if (c.added != nullptr) {
      expected.insert(std::upper_bound(expected.begin(), expected.end(), c.added), c.added);
      const auto rights =
          std::filesystem::status(ToPath(Path("db/" + Text(c.added)))).permissions();
      EXPECT_TRUE(kOnWindows || rights == allowed);
    }
    EXPECT_EQ(backups(), expected) << c.what;
  }
#ifndef _WIN32
  Execute(Path("db/Tamrin.mdb"), {"delete from Заметки"});
  const SmallFilesOnly limit(1000);
  EXPECT_FALSE(tmw::PackUserDatabase());
  EXPECT_EQ(front_end_.log.back(),
            "warning|Ошибка загрузки|Ошибка создания резервной копии базы данных:\r\n" +
                tmw::GetApiErrorText(EFBIG, ""));
  EXPECT_EQ(backups(), expected);
#endif
}

TEST_F(DatabaseRunTest, ADatabaseOfAnEarlierVersionOrABadCopyDoesNotReplaceTheUsers) {
  const Text books = sandbox_.Read("db/Tamrin.mdb");
  const Text built = sandbox_.Write("built.mdb", books);
  EXPECT_FALSE(
      tmw::ReplaceUserDatabase({built, tmw::GetFileHash(built), {3, 6, 1}, tmw::HashOfUserRows()}));
  EXPECT_TRUE(front_end_.log.at(0).starts_with("warning|Ошибка загрузки|")) << front_end_.log[0];
  FaultyFileSystem files(*ports_->files);
  ports_->files = &files;
  files.on_folder_flush = [&] { sandbox_.Write("db/Tamrin.mdb.new", books + "x"); };
  EXPECT_FALSE(
      tmw::ReplaceUserDatabase({built, tmw::GetFileHash(built), {3, 6, 0}, tmw::HashOfUserRows()}));
  EXPECT_NE(front_end_.log.at(1).find("не совпадает с исходным"), Text::npos) << front_end_.log[1];
  EXPECT_TRUE(sandbox_.Read("db/Tamrin.mdb") == books && !sandbox_.Has("db/Tamrin.mdb.new"));
}

TEST_F(DatabaseRunTest, AnAmountThatIsChangedWhileTheUpdateIsMadeIsKept) {
  Publish();
  int amount = 11;
  const auto change = [&] {
    Execute(Path("db/Tamrin.mdb"),
            {"update Книга set Сумма = " + std::to_string(++amount) + " where Ид = 1"});
  };
  on_line_ = [&](const std::string& line) {
    if (line == "icon install") change();
  };
  EXPECT_TRUE(Run().back().starts_with("warning|Ошибка загрузки|Пока готовилась новая база"));
  EXPECT_EQ(Rows("db/Tamrin.mdb", "Книга"), "1|12\r\n2|-3\r\n");
  on_line_ = nullptr;
  front_end_.answers = {true};
  clock_.on_sleep = [&] {
    if (listener_.log.back() == "sub Создание временной копии базы данных...") change();
  };
  EXPECT_TRUE(Run().back().starts_with("warning|Ошибка загрузки|Пока готовилась новая база"));
  EXPECT_EQ(Rows("db/Tamrin.mdb", "Книга"), "1|13\r\n2|-3\r\n");
  clock_.on_sleep = nullptr;
  front_end_.answers = {true};
  Run();
  EXPECT_EQ(Rows("db/Tamrin.mdb", "Книга"), "1|13|2001\r\n2|-3|2002\r\n");
}

}  // namespace
}  // namespace tests
