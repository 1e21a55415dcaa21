#include "tests/engine/whole_run_fixture.h"

namespace tests {
namespace {

const std::string kError = "warning|Ошибка загрузки|";
const std::string kFileError = kError + "Ошибка загрузки файла ";
const std::string kQuestion = "question|Обновление программы|";
const std::string kInUse = "question|Файл уже используется|";
const std::string kPlacing = "sub Установка рабочей базы данных...";

TEST_F(WholeRunTest, AFailedRunIsReportedLeavesTheBooksAloneAndIsMadeGoodByTheNextOne) {
  const struct {
    std::string box;  // the last one's beginning
    std::function<void()> arrange;
    bool is_touched = false;  // program files are replaced already
  } cases[] = {
      {kFileError + "с информацией о версии:\r\n",
       [&] { url_ = "http://127.0.0.1:" + std::to_string(UnusedPort()); }},
      {kError + "Ошибка при обработке архивного файла ",
       [&] { Damage("_PackageManifest.tmz", 300); }},
      {kQuestion, [&] { cancel_at_ = "sub " + server_.Url("/TMW_3.6.2.0/f2.tmz"); }},
      {kQuestion, [&] { cancel_at_ = "sub Выполнение сценария обновления 3.6.0 -> 3.6.1 ..."; }},
      {kFileError + "Программа.dll:\r\nКонтрольная", [&] { ServeInstead("new pr0gram"); }},
      {kFileError + "Программа.dll:\r\nДлина", [&] { ServeInstead("new"); }},
      {kError + "Ошибка распаковки файла Программа.dll", [&] { Damage("f1.tmz"); }},
      {kFileError + server_.Url("/TMW_3.6.2.0/updates.tmz:\r\nКонтрольная сумма"),
       [&] { Damage("updates.tmz"); }},
      {kError + "Отсутствует сценарий обновления базы данных для версии 3.6.1.",
       [&] { release_.scripts.pop_back(), Publish(); }},
      {"error|", [&] { HoldDatabase(); }},
      {kInUse, [&] { When("icon scan", [&] { HoldDatabase(); }); }},
      {"error|Ошибка удаления файла ",
       [&] {
         When("main Удаление старых компонент...",
              [&] { disk_->remove_codes.assign(41, FaultyFileSystem::kBusy); });
       },
       true},
      {"error|Ошибка копирования файла ",
       [&] { When("icon install", [&] { disk_->write_budget = 5; }); }, true},
      {kInUse, [&] { When("icon install", [&] { HoldDatabase(); }); }, true},
      {"error|Ошибка копирования файла ", [&] { When(kPlacing, [&] { disk_->write_budget = 5; }); },
       true},
      {kError + "Новая база данных \"",
       [&] {
         When(kPlacing,
              [&] { sandbox_.Write("tmp/TMW_WebUpdate/R 3.6.0.2/DBUpdates/Tamrin.mdb", "x"); });
       },
       true},
  };
  for (const auto& c : cases) {
    Restore();
    const auto old = Installed();
    c.arrange();
    const auto boxes = Run();
    SCOPED_TRACE(boxes.empty() ? c.box : boxes.back());
    EXPECT_TRUE(!updated_ && !boxes.empty() && boxes.back().starts_with(c.box)) << c.box;
    EndFaults();
    PublishGood();
    EXPECT_TRUE(sandbox_.Read("db/Tamrin.mdb") == kept_);
    EXPECT_TRUE(c.is_touched || Installed() == old);
    EXPECT_EQ(advice_.empty(), !IsMarked()) << advice_;
    RunUnattended();
    EXPECT_TRUE(updated_ && front_end_.log.empty());
    ExpectAllNew();
  }
}

TEST_F(WholeRunTest, AFallbackServerServesAndARepairMendsWhatIsDamaged) {
  const fs::path database = ToPath(Path("db/Tamrin.mdb"));
  auto rights = fs::perms::none;
  When("icon trash", [&] {  // the copy of it is ready by then
    fs::permissions(database, fs::perms{0600});
    rights = fs::status(database).permissions();
  });
  url_ = "http://127.0.0.1:" + std::to_string(UnusedPort());
  fallback_url_ = server_.Url("");
  Run();
  ExpectAllNew();
  EXPECT_EQ(fs::status(database).permissions(), rights);
  sandbox_.Write("Продукт/Bin/Программа.dll", "new pr0gram");
  old_version_ = "3.6.2.0";
  front_end_.answers = {true, true};
  Run();
  EXPECT_TRUE(updated_);
  ExpectAllNew();
}

// Once as if the process had died at that change, once as if only that change had been refused. A
// run takes ten times as long under Wine, where every seventh change is tried.
TEST_F(WholeRunTest, WhicheverChangeOfTheDiskFailsTheRowsAreWholeAndTheNextRunFinishes) {
  constexpr std::size_t kStep = kOnWindows ? 7 : 1;
  for (const bool once : {false, true}) {
    int without_database = 0;
    bool has_failed = true;
    for (std::size_t allowed = 0; has_failed; allowed += kStep) {
      ASSERT_LT(allowed, 300U);
      Restore();
      disk_->fails_once = once;
      When("main Сохранение предыдущей версии...", [&] { disk_->changes_left = allowed; });
      Run();
      SCOPED_TRACE(std::to_string(allowed) + front_end_.log.back());
      has_failed = disk_->failures > 0;
      EndFaults();
      const bool is_there = sandbox_.Has("db/Tamrin.mdb");
      const std::string file = is_there ? "db/Tamrin.mdb" : "db/Tamrin.mdb.new";
      const bool is_old = is_there && sandbox_.Read(file) == kept_;
      EXPECT_TRUE(is_old || Rows(file, "Книга") + Rows(file, "Заметки") == kNewBook + "7\r\n");
      EXPECT_TRUE(is_old || sandbox_.Has("db/Tamrin_0.zip"));
      const std::string updater = sandbox_.Read("Продукт/tm/tmwebupdate.EXE");
      EXPECT_TRUE(updater == "old updater" || updater == "new updater") << updater;
      EXPECT_TRUE(sandbox_.Has("Продукт/help.txt") || updater == "new updater");
      if (!is_there) {
        ++without_database;
        EXPECT_TRUE(front_end_.log.back().ends_with(
            "\r\n\r\nНовая рабочая база данных со всеми вашими записями лежит в файле \"" +
            Path(tmw::NativePath(file)) + "\". Запустите обновление еще раз: оно даст ей имя \"" +
            Path(tmw::NativePath("db/Tamrin.mdb")) + "\"."))
            << front_end_.log.back();
      }
      if (has_failed) RunUnattended();
      ExpectAllNew();
    }
    EXPECT_TRUE(without_database == 1 || kStep > 1) << without_database;
  }
}

}  // namespace
}  // namespace tests
