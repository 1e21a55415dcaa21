#include <algorithm>

#include "product/kept_list.h"
#include "rollback/run.h"
#include "tests/engine/whole_run_fixture.h"
#include "tests/fakes/scripted_file_probe.h"

namespace tests {
namespace {

using tmw::RunOutcome;

const std::string kTitle = "|Возврат к предыдущей версии|";
const std::string kKept = "Продукт/Предыдущая версия/";

// An installation that has been updated and is brought back.
class RollbackTest : public WholeRunTest {
 protected:
  RollbackTest() {
    good_.files.push_back({"added.dll", "added", "{p}Новая/Папка"});
    good_.files.push_back({"extra.dll", "added", "{p}Bin"});
    good_.files.push_back({"Отчет.tms", "new script", "{p}Bin"});
    Renew();
  }

  // The release has been published, no run has been tried.
  void Renew() {
    Restore();
    PublishGood();
    sandbox_.Write("Продукт/Bin/Отчет.tms", "old script");
    sandbox_.Write("Продукт/Bin/Отчет.xml", "its description");
    sandbox_.Write("db/DBUpdates/other.xml", "not replaced");
    old_version_ = "3.6.0.0";
    before_ = State();
  }

  bool Update() {
    front_end_.answers = {true, true};
    Run();
    return updated_;
  }

  RunOutcome RollBack(rollback::Wishes wishes = {true}) {
    front_end_.log.clear();
    listener_ = RunListener();
    try {
      return rollback::BringBack(wishes, listener_);
    } catch (const tmw::ProgramError& error) {
      front_end_.log.push_back("error|" + error.Description);
      return RunOutcome::kFailed;
    }
  }

  // All files but those that a rollback leaves on purpose, under their paths in the sandbox.
  std::map<std::string, std::string> State() const {
    std::map<std::string, std::string> files;
    for (const auto& [path, bytes] : Installed()) {
      const bool is_left = path.ends_with(".zip") || path.ends_with("TMW_LastRollback.txt") ||
                           path.find("Предыдущая версия") != std::string::npos ||
                           path.find(" (до отката ") != std::string::npos;
      std::string name = path.substr(sandbox_.Path().size() + 1);
      std::replace(name.begin(), name.end(), '\\', '/');
      if (!is_left) files[name] = bytes;
    }
    return files;
  }

  std::vector<std::string> Differences() const {
    std::vector<std::string> names;
    auto now = State();
    for (const auto& [path, bytes] : before_) {
      if (!now.contains(path) || now[path] != bytes) names.push_back(path);
      now.erase(path);
    }
    for (const auto& [path, bytes] : now)
      names.push_back("+" + path);
    if (sandbox_.Has("Продукт/Новая")) names.emplace_back("+Продукт/Новая");
    return names;
  }

  std::string SetAside() const {
    std::string found;
    for (const auto& entry : fs::directory_iterator(ToPath(Path("db")))) {
      const std::string name = FromPath(entry.path().filename());
      if (name.starts_with("Tamrin (до отката ")) found += (found.empty() ? "" : "|") + name;
    }
    return found;
  }

  std::map<std::string, std::string> before_;
};

TEST_F(RollbackTest, FilesAndBooksComeBackAndThePresentBooksAreSetAside) {
  ASSERT_TRUE(Update());
  EXPECT_FALSE(sandbox_.Has("Продукт/Bin/Отчет.xml"));
  Execute(Path("db/Tamrin.mdb"), {"insert into Заметки values (8)"});
  const std::string present = sandbox_.Read("db/Tamrin.mdb");
  front_end_.answers = {true};
  EXPECT_EQ(RollBack({}), RunOutcome::kDone);
  EXPECT_EQ(Differences(), std::vector<std::string>());
  EXPECT_EQ(sandbox_.Read("db/" + SetAside()), present);
  EXPECT_FALSE(sandbox_.Has("Продукт/Предыдущая версия"));
  ASSERT_EQ(front_end_.log.size(), 2U);
  for (const char* const words : {"Предыдущая версия: 3.6.0.0", "будет отменено: 3.6.2.0",
                                  "возвращено: 7, удалено "
                                  "добавленных обновлением: 3",
                                  "останутся в файле \"", "вместе с базой данных?"}) {
    EXPECT_NE(front_end_.log[0].find(words), std::string::npos) << front_end_.log[0];
  }
  EXPECT_TRUE(front_end_.log[1].starts_with("information" + kTitle + "Программа \"Tamrin\" " +
                                            "возвращена к предыдущей версии 3.6.0.0."));
  EXPECT_EQ(RollBack(), RunOutcome::kRefused) << "a second time";
  EXPECT_TRUE(Update()) << "the same release is offered again";
  EXPECT_EQ(RollBack(), RunOutcome::kDone);
  EXPECT_EQ(Differences(), std::vector<std::string>());
}

TEST_F(RollbackTest, TheFilesAloneComeBackAfterAWarning) {
  ASSERT_TRUE(Update());
  const std::string present = sandbox_.Read("db/Tamrin.mdb");
  sandbox_.Write("Продукт/Новая/Папка/added.dll", "changed by somebody");
  front_end_.answers = {false, false};
  const auto updated = State();
  EXPECT_EQ(RollBack({}), RunOutcome::kRefused);
  EXPECT_EQ(State(), updated);
  EXPECT_NE(front_end_.log.back().find("может отказаться работать"), std::string::npos);
  front_end_.answers = {false, true};
  EXPECT_EQ(RollBack({}), RunOutcome::kDone);
  EXPECT_EQ(Differences(),
            (std::vector<std::string>{"db/Tamrin.mdb", "+Продукт/Новая/Папка/added.dll",
                                      "+Продукт/Новая"}));
  EXPECT_EQ(sandbox_.Read("db/Tamrin.mdb"), present);
  EXPECT_NE(front_end_.log.back().find("added.dll"), std::string::npos) << "is left, and named";
}

TEST_F(RollbackTest, NothingIsTouchedUnlessAllThatIsKeptIsWhole) {
  const std::string spoiled = "warning" + kTitle + "Сохраненный файл предыдущей версии \"";
  const std::string list = kKept + "TMW_Kept.txt";
  ScriptedFileProbe probe(*ports::CurrentPorts().file_probe);
  const struct {
    std::string box;  // its beginning
    std::function<void()> arrange;
    RunOutcome outcome = RunOutcome::kFailed;
  } cases[] = {
      {spoiled + Path(kKept + "1/1 Программа.dll"),
       [&] { sandbox_.Write(kKept + "1/1 Программа.dll", "0ld program"); }},
      {spoiled + Path(kKept + "1/"), [&] { fs::remove(ToPath(Path(kKept + "1/2 help.txt"))); }},
      {"warning" + kTitle + "Резервная копия базы данных \"" + Path("db/Tamrin_0.zip"),
       [&] {
         std::string zip = sandbox_.Read("db/Tamrin_0.zip");
         zip[zip.size() / 2] ^= 1;
         sandbox_.Write("db/Tamrin_0.zip", zip);
       }},
      {"warning" + kTitle + "Резервная копия базы данных \"",
       [&] { fs::remove(ToPath(Path("db/Tamrin_0.zip"))); }},
      {"warning" + kTitle + "Список файлов предыдущей версии \"",
       [&] { sandbox_.Write(list, sandbox_.Read(list).substr(0, 500)); }},
      {"information" + kTitle + "Возвращаться не к чему", [&] { fs::remove(ToPath(Path(list))); },
       RunOutcome::kRefused},
      {"information" + kTitle + "Обновление или восстановление программы было прервано",
       [&] { sandbox_.Write("Продукт/TMW_Installing.txt", "R 9"); }, RunOutcome::kRefused},
      {"information" + kTitle + "Обновление или восстановление программы было прервано",
       [&] {  // of the release itself
         old_version_ = release_.version;
         sandbox_.Write("Продукт/help.txt", "spoiled");
         When("icon install", [] { throw tmw::ProgramError(1001, "x"); });
         Update();
       },
       RunOutcome::kRefused},
      {"question|Файл уже используется|", [&] { HoldDatabase(); }},
      {"warning" + kTitle + "Недостаточно места на диске",
       [&] {  // for the largest file
         ports::CurrentPorts().file_probe = &probe;
         probe.space = [](const std::string&) { return ports::DiskSpace{"", 11}; };
       }},
  };
  for (const auto& c : cases) {
    Renew();
    ASSERT_TRUE(Update());
    c.arrange();
    const auto now = State();
    EXPECT_EQ(RollBack(), c.outcome) << c.box;
    ASSERT_FALSE(front_end_.log.empty()) << c.box;
    EXPECT_TRUE(front_end_.log.back().starts_with(c.box)) << front_end_.log.back();
    EXPECT_TRUE(State() == now && SetAside().empty()) << c.box;
  }
}

// Once as if the process had died at that change, once as if only that change had been refused.
TEST_F(RollbackTest, WhicheverChangeFailsTheBooksAreWholeAndTheNextRollbackFinishes) {
  constexpr std::size_t kStep = kOnWindows ? 9 : 1;
  ASSERT_TRUE(Update());
  const auto copy_all = [&](const std::string& from, const std::string& to) {
    for (const std::string folder : {"Продукт", "db", "tmp"}) {
      fs::remove_all(ToPath(Path(to + folder)));
      fs::create_directories(ToPath(Path(to + folder)));
      const fs::path source = ToPath(Path(from + folder));
      for (const auto& entry : fs::recursive_directory_iterator(source)) {
        const fs::path target = ToPath(Path(to + folder)) / entry.path().lexically_relative(source);
        fs::create_directories(entry.is_directory() ? target : target.parent_path());
        if (!entry.is_directory()) fs::copy_file(entry.path(), target);
      }
    }
  };
  copy_all("", "updated/");
  const std::string present = sandbox_.Read("db/Tamrin.mdb");
  for (const bool once : {false, true}) {
    bool has_failed = true;
    for (std::size_t allowed = 0; has_failed; allowed += kStep) {
      ASSERT_LT(allowed, 300U);
      EndFaults();
      copy_all("updated/", "");
      disk_->fails_once = once;
      disk_->changes_left = allowed;
      RollBack();
      SCOPED_TRACE(std::to_string(allowed) + (once ? " once " : " dies ") +
                   (front_end_.log.empty() ? "" : front_end_.log.back()));
      has_failed = disk_->failures > 0;
      EndFaults();
      const bool is_there = sandbox_.Has("db/Tamrin.mdb");
      EXPECT_TRUE(is_there || sandbox_.Has("db/Tamrin.mdb.new"));
      const std::string aside = SetAside();
      EXPECT_EQ(sandbox_.Read(aside.empty() ? "db/Tamrin.mdb" : "db/" + aside), present);
      const std::string updater = sandbox_.Read("Продукт/tm/tmwebupdate.EXE");
      EXPECT_TRUE(updater == "old updater" || updater == "new updater") << updater;
      const auto differences = [&] {
        auto names = Differences();
        if (once) std::erase(names, "+Продукт/Новая");  // empty, it stays if it was held
        return names;
      };
      EXPECT_TRUE(differences().empty() || RollBack() == RunOutcome::kDone);
      EXPECT_EQ(differences(), std::vector<std::string>());
      EXPECT_EQ(sandbox_.Read("db/" + SetAside()), present);
    }
  }
}

// What the update had done before it died is undone: it is not finished first.
TEST_F(RollbackTest, AnUpdateThatDiedAtAnyChangeIsBroughtBack) {
  constexpr std::size_t kStep = kOnWindows ? 17 : 3;
  bool has_failed = true;
  for (std::size_t allowed = 0; has_failed; allowed += kStep) {
    ASSERT_LT(allowed, 300U);
    Renew();
    When("main Сохранение предыдущей версии...", [&] { disk_->changes_left = allowed; });
    Update();
    SCOPED_TRACE(std::to_string(allowed) + front_end_.log.back());
    has_failed = disk_->failures > 0;
    EndFaults();
    const bool is_begun = sandbox_.Has("Продукт/TMW_Installing.txt") || !has_failed;
    const RunOutcome outcome = RollBack();
    EXPECT_TRUE(!is_begun || outcome == RunOutcome::kDone) << front_end_.log.back();
    EXPECT_TRUE(sandbox_.Has("db/Tamrin.mdb") && !sandbox_.Has("Продукт/TMW_Installing.txt"));
    auto differences = Differences();
    if (!is_begun) std::erase(differences, "+Продукт/TMW_Installing.txt.new");
    EXPECT_EQ(differences, std::vector<std::string>());
    RunUnattended();
    EXPECT_TRUE(updated_);
    ExpectAllNew();
  }
}

TEST_F(RollbackTest, WhatWasKeptFirstStaysWhateverRunComesNext) {
  const auto die_while_installing = [&] {
    When("sub Отчет.tms", [&] {
      const std::string help = Path(tmw::NativePath("Продукт/help.txt"));
      if (Installed()[help] == "new help") throw tmw::ProgramError(1001, "x");
    });
    EXPECT_FALSE(Update());
    EndFaults();
    old_version_ = "3.6.0.0";
  };
  const auto publish_other = [&] {
    release_.version = "3.6.2.1";
    release_.version_id = "R other";
    release_.files.back() = {"more.dll", "more", "{p}Bin"};
    release_.files[0].content = "newer program";
    Publish();
  };
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"finished by the next run", [&] { die_while_installing(); }},
      {"finished by another release",
       [&] {
         die_while_installing();
         publish_other();
       }},
      {"repaired",
       [&] {
         EXPECT_TRUE(Update());
         old_version_ = release_.version;
         sandbox_.Write("Продукт/help.txt", "spoiled");
       }},
      {"after a rollback", [&] {
         EXPECT_TRUE(Update());
         EXPECT_EQ(RollBack(), RunOutcome::kDone);
         for (const auto& entry : fs::directory_iterator(ToPath(Path("db")))) {
           if (FromPath(entry.path()).find("отката") != std::string::npos) fs::remove(entry);
         }
       }}};
  for (const auto& [what, arrange] : cases) {
    Renew();
    arrange();
    EXPECT_TRUE(Update()) << what << front_end_.log.back();
    std::string reason;
    EXPECT_EQ(tmw::TryReadKeptList(reason)->NewVersion, release_.version) << what;
    EXPECT_EQ(RollBack(), RunOutcome::kDone) << what << front_end_.log.back();
    EXPECT_EQ(Differences(), std::vector<std::string>()) << what;
  }
  Renew();
  ASSERT_TRUE(Update());
  old_version_ = release_.version;
  before_ = State();
  publish_other();
  release_.version = "3.6.3.0";
  release_.scripts.push_back({"3.xml", UpdateScript("3.6.2", "3.6.3", "delete from Архив")});
  Publish();
  ASSERT_TRUE(Update()) << front_end_.log.back();
  EXPECT_EQ(RollBack(), RunOutcome::kDone);
  EXPECT_EQ(sandbox_.Read("Продукт/Bin/Программа.dll"), "new program") << "one release back";
  EXPECT_EQ(Rows("db/Tamrin.mdb", "DBVersion"), "3|6|2\r\n");
}

TEST_F(RollbackTest, WithoutRoomTheUserDecidesAndNoListDescribesTheUpdate) {
  for (const bool goes_on : {false, true}) {
    Renew();
    ASSERT_TRUE(Update());
    old_version_ = "3.6.2.4";
    release_.version = "3.6.2.5";
    release_.files[0].content = "newest program";
    Publish();
    disk_->has_links = false;
    on_line_ = [&](const std::string& line) {
      if (line == "main Сохранение предыдущей версии...") disk_->write_budget = 5;
      if (line == "mode 0") disk_->write_budget.reset();
    };
    front_end_.answers = {true, goes_on};
    const auto boxes = Run();
    EXPECT_EQ(updated_, goes_on) << boxes.back();
    EXPECT_TRUE(
        boxes.back().starts_with("question|Обновление программы|Не удалось сохранить "
                                 "предыдущую версию программы:\r\n"))
        << boxes.back();
    EndFaults();
    EXPECT_EQ(RollBack(), goes_on ? RunOutcome::kRefused : RunOutcome::kDone) << "to the first one";
    release_ = good_;
  }
}

}  // namespace
}  // namespace tests
