#include <algorithm>
#include <filesystem>
#include <functional>
#include <tuple>

#include "engine/space_look.h"
#include "engine/target_look.h"
#include "foundation/api_errors.h"
#include "tests/engine/run_fixture.h"
#include "tests/fakes/faulty_file_system.h"
#include "tests/fakes/scripted_file_probe.h"

namespace tests {
namespace {

using ports::FileFinding;
using ports::Hindrance;
using tmw::Obstacle;
using tmw::ObstacleSite;

const std::string kError = "warning|Ошибка загрузки|";
constexpr ports::SystemCode kDenied = kOnWindows ? 5 : 13;

// A run whose second look can meet other facts than its first one.
class LookTest : public RunTest {
 protected:
  LookTest() { ports_->file_probe = &probe_; }

  void Script(const std::string& name, std::deque<FileFinding> findings) {
    probe_.findings[tmw::JoinPath(Path("Продукт"), name)] = std::move(findings);
  }

  ScriptedFileProbe probe_{*ports_->file_probe};
};

TEST_F(LookTest, WhatIsInTheWayIsNamedBeforeTheQuestionOrBeforeTheFirstRemoval) {
  release_.files[0].is_com = "yes";
  Publish();
  const std::string program = "\"" + Path("Продукт/Bin/Программа.dll") + "\"";
  const std::pair<std::string, std::function<void()>> cases[] = {
      {"На месте файла \"" + Path("Продукт/help.txt") + "\" находится папка.",
       [&] { sandbox_.Write("Продукт/help.txt/x", "x"); }},
      {"На месте файла \"" + Path("Продукт/TMW_Installing.txt") + "\" находится папка.",
       [&] { sandbox_.Write("Продукт/TMW_Installing.txt/x", "x"); }},
      {"На месте папки \"" + Path("Продукт/Bin") + "\" находится файл.",
       [&] { sandbox_.Write("Продукт/Bin", "x"); }},
      {"Невозможно заменить файлы в папке \"" + Path("Продукт/Bin") + "\":\r\n",
       [&] { sandbox_.Write("Продукт/Bin/TmWebUpdate.probe/held", "x"); }},
      {"Файл " + program + " защищен от изменений:\r\n",
       [&] {
         Script("Bin/Программа.dll", {{Hindrance::kProtected, 1}});
       }},
      {"Невозможно заменить файл " + program + ":\r\n",
       [&] {
         Script("Bin/Программа.dll", {{Hindrance::kForbidden, kDenied}});
       }},
      {"Невозможно зарегистрировать компоненты программы в системном реестре:\r\n",
       [&] { probe_.may_register = ports::Status::Failure(kDenied); }},
  };
  for (const auto& [beginning, plant] : cases) {
    for (const bool is_second : {false, true}) {
      std::filesystem::remove_all(ToPath(Path("Продукт")));
      probe_.may_register = ports::Status::Success();
      on_line_ = [&, act = plant](const std::string& line) {
        if (line == (is_second ? "main Загрузка компонент..." : "icon scan")) act();
      };
      front_end_.answers = {true};
      const auto boxes = Run();
      ASSERT_EQ(boxes.size(), is_second ? 2U : 1U) << beginning;
      EXPECT_TRUE(boxes.back().starts_with(kError + beginning) &&
                  boxes.back().ends_with(" Ничего не изменено."))
          << boxes.back();
      const bool is_denied = beginning.find("Программа.dll\":\r\n") != std::string::npos ||
                             beginning.find("реестре") != std::string::npos;
      EXPECT_EQ(front_end_.advices.back().starts_with("Не хватает прав"), is_denied) << beginning;
      EXPECT_EQ(listener_.Has("main Загрузка компонент..."), is_second);
      EXPECT_FALSE(listener_.Has("icon trash"));
    }
  }
}

TEST_F(LookTest, ASecondDatabaseOrSecondSettingsOfTheSystemsMakingEndTheRun) {
  FaultyFileSystem files(*ports_->files);
  ports_->files = &files;
  SetMode(false);
  Publish();
  files.virtual_store = sandbox_.Write("VirtualStore/Tamrin.mdb", "x");
  const auto databases = Run();
  ASSERT_EQ(databases.size(), 1U);
  EXPECT_TRUE(databases[0].starts_with(kError + "Рабочая база данных существует дважды: \"" +
                                       Path("db/Tamrin.mdb") + "\" и \"" + files.virtual_store))
      << databases[0];
  files.virtual_store = Path("none");
  const std::string copies = "Software\\Classes\\VirtualStore\\MACHINE\\SOFTWARE\\WOW6432Node\\";
  settings_.Set(ports::SettingsRoot::kUser, copies + "Kestrel Soft\\Tamrin\\General\\RootPath",
                "x");
  const auto settings = Run();
  ASSERT_EQ(settings.size(), 1U);
  EXPECT_TRUE(settings[0].starts_with(kError + "Настройки программы существуют дважды: "));
  EXPECT_EQ(Requests(), std::vector<std::string>());
}

TEST_F(LookTest, AHeldFileIsAskedAboutUntilItIsFree) {
  Publish();
  std::deque<FileFinding> once(11, {Hindrance::kHeld, 0});  // a second of patience, then the box
  for (const auto& [holders, words] :
       {std::tuple(std::vector<std::string>{}, "другой программой"),
        {std::vector<std::string>{"Книга"}, "программой \"Книга\""},
        {std::vector<std::string>{"Книга", "Excel"}, "программами \"Книга\", \"Excel\""}}) {
    probe_.holders = holders;
    Script("help.txt", once);
    front_end_.answers = {false};
    clock_.sleeps.clear();
    ASSERT_EQ(Run().size(), 1U);
    EXPECT_EQ(front_end_.log[0].find("question|Файл уже используется|Файл \"" +
                                     Path("Продукт/help.txt") + "\" занят " + words + ", "),
              0U)
        << front_end_.log[0];
    EXPECT_TRUE(front_end_.log[0].ends_with("\r\n\r\nПовторить попытку?"));
    EXPECT_EQ(clock_.sleeps, std::vector<std::int32_t>(10, 100));
  }
  Script("help.txt", once);
  front_end_.answers = {true, true};
  EXPECT_EQ(Run().size(), 2U);
  EXPECT_TRUE(updated_);
}

TEST_F(LookTest, TooLittleRoomRefusesAndPerhapsTooLittleAsks) {
  release_.files[0].content = std::string(30'000, 'x');
  Publish();
  sandbox_.Write("Продукт/Bin/Программа.dll", std::string(20'000, 'y'));
  const auto package = sandbox_.Read("server/TMW_3.6.0.2/f1.tmz").size();
  const auto loading = static_cast<std::int64_t>(30'000 + package);
  const std::int64_t growth = 30'000 + 8;  // the old files are kept
  const std::string volume = "question|Обновление программы|Ориент";
  const std::string perhaps =
      "question|Обновление программы|Может не хватить места на диске, на "
      "котором находится папка \"";
  const auto set_space = [&](std::int64_t temporary, std::int64_t product) {
    probe_.space = [=](const std::string& folder) {
      const bool is_temporary = product < 0 || folder.find("TMW_WebUpdate") != std::string::npos;
      return ports::DiskSpace{is_temporary ? "t" : "p", is_temporary ? temporary : product};
    };
  };
  const struct {
    std::int64_t temporary;
    std::int64_t product;  // -1: on the same disk
    std::string box;       // its beginning
  } cases[] = {
      {loading, growth, volume},
      {loading - 1, growth,
       kError + "Недостаточно места на диске, на котором находится папка \"" +
           Path("tmp/TMW_WebUpdate") + "\".\r\nДля обновления необходимо не менее "},
      {loading, growth - 1, perhaps + Path("Продукт")},
      {loading + growth, -1, volume},
      {loading + growth - 1, -1, perhaps + Path("tmp")},
  };
  for (const auto& c : cases) {
    set_space(c.temporary, c.product);
    front_end_.answers = {false};
    ASSERT_EQ(Run().size(), 1U) << c.box;
    EXPECT_TRUE(front_end_.log[0].starts_with(c.box)) << front_end_.log[0];
  }
  set_space(loading, growth - 1);
  front_end_.answers = {true, true, false};
  EXPECT_EQ(Run().size(), 3U) << "asked once more before the removal";
  EXPECT_FALSE(listener_.Has("icon trash"));
  EXPECT_NE(front_end_.log[0].find(".\r\nДля обновления может понадобиться до "),
            std::string::npos);
  set_space(0, growth);
  EXPECT_EQ(Run().size(), 1U);
  EXPECT_TRUE(front_end_.log[0].starts_with(volume)) << "all is loaded: " << front_end_.log[0];
}

TEST(Look, LoadingTakesTheMostRoomAtSomeMoment) {
  using Items = std::vector<tmw::SpaceItem>;
  const std::pair<Items, std::int64_t> cases[] = {
      {{}, 0},
      {{{10, 100, 0}}, 110},
      {{{50, 100, 0}, {10, 20, 0}}, 150},
      {{{10, 100, 0}, {50, 100, 0}}, 250},
      {{{10, 100, 4}, {50, 100, 20}}, 226},
  };
  for (const auto& [items, peak] : cases)
    EXPECT_EQ(tmw::DownloadPeak(items), peak);
}

TEST(Look, AShortageNamesTheFolderThatNeedsMostOnTheDisk) {
  const auto one_disk = [](const std::string&) { return ports::DiskSpace{"d", 14}; };
  const auto shortage = tmw::FindShortage({{"a", 4, 6}, {"b", 5, 0}}, one_disk);
  ASSERT_TRUE(shortage);
  EXPECT_TRUE(shortage->Folder == "a" && shortage->Needed == 15 && !shortage->IsCertain);
}

TEST_F(LookTest, AServerComputerNeedsRoomForItsDatabasesToo) {
  tmw::Manifest manifest;
  manifest.Tables = {{false, "A", "", 10, "", true},
                     {false, "Current", "", 20, "", false},
                     {false, "Loaded", "", 30, "", true},
                     {true, "User", "", 0, "", true}};
  manifest.ScriptsPackage.PackSize = 100;
  manifest.StructuresPackage.PackSize = 200;
  const auto base = static_cast<std::int64_t>(sandbox_.Read("db/Tamrin.mdb").size());
  sandbox_.Write("db/Tamrin_LastVer.mdb", std::string(11, 'x'));
  sandbox_.Write("tmp/R/Parts/A.table.tmz.part", "1234");
  sandbox_.Write("tmp/R/Loaded/Loaded.table", "x");
  const auto release = tmw::MakeReleasePaths(Path("tmp"), "R");
  std::vector<tmw::SpaceNeed> expected = {
      {Path("db"), 0, base},
      {Path("db"), 0, base + base - 11},  // the backup, and what the other one grows by
      {sandbox_.Path(), 0, 11},
      {Path("tmp/R"), 196, (10 + 100 + 200 + 30) * 8 + 5 * base}};
  for (const auto moment : {tmw::SpaceMoment::kBeforeDownload, tmw::SpaceMoment::kBeforeRemoval}) {
    const auto needs = tmw::PlanSpace(manifest, false, release, moment);
    ASSERT_EQ(needs.size(), expected.size());
    for (std::size_t i = 0; i < needs.size(); ++i) {
      EXPECT_EQ(needs[i].Folder, expected[i].Folder);
      EXPECT_EQ(needs[i].Announced, expected[i].Announced) << i;
      EXPECT_EQ(needs[i].Estimated, expected[i].Estimated) << i;
    }
    expected.pop_back();
  }
}

TEST_F(LookTest, EveryFileConcernedIsLookedAt) {
  sandbox_.Write("db/DBUpdates/1.xml", "x");
  tmw::Manifest manifest;
  for (const char* const name : {"a.dll", "b.tms", "c.tms", "c.xml", "TmWebUpdate.EXE", "same"}) {
    manifest.Files.emplace_back();
    manifest.Files.back().OrigName = name;
    manifest.Files.back().Folder = Path("Продукт");
    manifest.Files.back().NeedUpdate = name != std::string("same");
  }
  const std::string program = "TMW_Installing.txt+ a.dll b.tms b.xml c.tms c.xml TmWebUpdate.EXE+ ";
  for (const bool is_client : {true, false}) {
    const tmw::LookPlan plan = tmw::PlanLook(manifest, is_client);
    std::string names;
    for (const tmw::LookTarget& target : plan.Files) {
      names += tmw::SplitFileName(target.Path).FileName() +
               (target.How == ports::Replacement::kRenameOver ? "+ " : " ");
    }
    EXPECT_EQ(names, program + (is_client ? ""
                                          : "Tamrin.mdb Tamrin.mdb.new Tamrin_LastVer.mdb "
                                            "1.xml "));
    const std::string scripts = Path("db/DBUpdates");
    EXPECT_EQ(std::count(plan.Folders.begin(), plan.Folders.end(), scripts), is_client ? 0 : 1);
    EXPECT_FALSE(plan.Registers);
  }
}

TEST(Look, OneBoxNamesEveryKindOfObstacleAndFiveOfAKind) {
  const std::string reason = tmw::TrimCharacters(tmw::GetApiErrorText(kDenied, ""), "\r\n");
  std::vector<Obstacle> obstacles = {
      {ObstacleSite::kFolder, Hindrance::kForbidden, "P", kDenied},
      {ObstacleSite::kFile, Hindrance::kFolder, "a", 0},
      {ObstacleSite::kFolder, Hindrance::kForbidden, "Q", kDenied},
  };
  const std::string folder = "Невозможно заменить файлы в папке \"P\":\r\n" + reason +
                             "\r\nВозможно, у текущего пользователя нет необходимых прав.";
  EXPECT_EQ(
      tmw::DescribeObstacles(obstacles),
      folder +
          "\r\nТо же относится к следующему: \"Q\".\r\n\r\nНа месте файла \"a\" находится "
          "папка. Переименуйте ее или перенесите в другое место и повторите попытку. Ничего не изменено.");
  EXPECT_EQ(tmw::DescribeObstacles({obstacles[0]}), folder + " Ничего не изменено.");
  for (const char* const name : {"b", "c", "d", "e", "f", "g"})
    obstacles.push_back({ObstacleSite::kFile, Hindrance::kFolder, name, 0});
  EXPECT_NE(tmw::DescribeObstacles(obstacles).find(
                "следующему: \"b\", \"c\", \"d\", \"e\" и еще 2. Ничего"),
            std::string::npos);
  for (const auto& [kind, is_denied] : {std::pair(Hindrance::kForbidden, true),
                                        {Hindrance::kProtected, false},
                                        {Hindrance::kHeld, false}}) {
    EXPECT_EQ(
        (tmw::LookResult{{obstacles[1], {ObstacleSite::kFile, kind, "x", 0}}}).IsAccessDenied(),
        is_denied);
  }
}

}  // namespace
}  // namespace tests
