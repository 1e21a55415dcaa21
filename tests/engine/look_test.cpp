#include <filesystem>
#include <functional>
#include <tuple>

#include "engine/space_look.h"
#include "engine/target_look.h"
#include "foundation/api_errors.h"
#include "tests/engine/run_fixture.h"
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
  const struct {
    const char* what;
    std::function<void()> plant;
    std::function<void()> clear;
    std::string beginning;  // of the box, with native separators
  } cases[] = {
      {"folder", [&] { std::filesystem::create_directories(ToPath(Path("Продукт/help.txt"))); },
       [&] { std::filesystem::remove(ToPath(Path("Продукт/help.txt"))); },
       "На месте файла \"" + Path("Продукт/help.txt") + "\" находится папка."},
      {"file", [&] { sandbox_.Write("Продукт/Bin", "x"); },
       [&] { std::filesystem::remove(ToPath(Path("Продукт/Bin"))); },
       "На месте папки \"" + Path("Продукт/Bin") + "\" находится файл."},
      {"protected",
       [&] {
         Script("Bin/Программа.dll", {{Hindrance::kProtected, 1}});
       },
       [] {}, "Файл " + program + " защищен от изменений:\r\n"},
      {"forbidden",
       [&] {
         Script("Bin/Программа.dll", {{Hindrance::kForbidden, kDenied}});
       },
       [] {}, "Невозможно заменить файл " + program + ":\r\n"},
      {"registry", [&] { probe_.may_register = ports::Status::Failure(kDenied); },
       [&] { probe_.may_register = ports::Status::Success(); },
       "Невозможно зарегистрировать компоненты программы в системном реестре:\r\n"},
  };
  for (const auto& c : cases) {
    for (const bool is_second : {false, true}) {
      SCOPED_TRACE(c.what);
      front_end_.answers = {true};
      const std::string moment = "sub " + server_.Url("/TMW_3.6.0.2/f1.tmz");
      on_line_ = [&](const std::string& line) {
        if (is_second && line == moment) c.plant();
      };
      if (!is_second) c.plant();
      const auto boxes = Run();
      c.clear();
      ASSERT_EQ(boxes.size(), is_second ? 2U : 1U);
      EXPECT_TRUE(boxes.back().starts_with(kError + c.beginning)) << boxes.back();
      EXPECT_TRUE(boxes.back().ends_with(" Ничего не изменено.")) << boxes.back();
      EXPECT_FALSE(listener_.Has("icon trash"));
    }
  }
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
  const auto size = [&](const char* name) {
    return static_cast<std::int64_t>(
        sandbox_.Read("server/TMW_3.6.0.2/" + std::string(name)).size());
  };
  // The second file's package is smaller than the first one's, which is gone by then.
  const std::int64_t loading = 30'000 + size("f1.tmz");
  const std::int64_t growth = 10'000 + 8;
  const struct {
    const char* what;
    std::int64_t temporary;
    std::int64_t product;
    bool has_one_disk;
    std::string box;  // its beginning; empty: only the question about the volume
  } cases[] = {
      {"just enough", loading, growth, false, ""},
      {"too little to load", loading - 1, growth, false,
       kError + "Недостаточно места на диске, на котором находится папка \"" + Path("tmp") +
           tmw::JoinPath("/", "TMW_WebUpdate") + "\".\r\nДля обновления необходимо не менее "},
      {"perhaps too little to install", loading, growth - 1, false,
       "question|Обновление программы|Может не хватить места на диске, на котором находится папка "
       "\"" +
           Path("Продукт")},
      {"one disk", loading + growth, 0, true, ""},
      {"one disk, perhaps too little", loading + growth - 1, 0, true,
       "question|Обновление программы|Может не хватить места на диске, на котором находится папка "
       "\"" +
           Path("tmp")},
  };
  for (const auto& c : cases) {
    probe_.space = [&](const std::string& folder) {
      const bool is_temporary = c.has_one_disk || folder.find("TMW_WebUpdate") != std::string::npos;
      return ports::DiskSpace{is_temporary ? "t" : "p", is_temporary ? c.temporary : c.product};
    };
    front_end_.answers = {false};
    const auto boxes = Run();
    ASSERT_EQ(boxes.size(), 1U) << c.what;
    EXPECT_TRUE(
        boxes[0].starts_with(c.box.empty() ? "question|Обновление программы|Ориент" : c.box))
        << c.what << boxes[0];
  }
  // The answer yes goes on; before the removal it is asked once more, about what is left to do.
  probe_.space = [&](const std::string& folder) {
    return ports::DiskSpace{
        folder.find("TMW_WebUpdate") != std::string::npos ? "t" : "p",
        folder.find("TMW_WebUpdate") != std::string::npos ? loading : growth - 1};
  };
  front_end_.answers = {true, true, false};
  EXPECT_EQ(Run().size(), 3U);
  EXPECT_FALSE(listener_.Has("icon trash"));
  EXPECT_EQ(sandbox_.Read("Продукт/Bin/Программа.dll")[0], 'y');
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

TEST_F(LookTest, ADatabaseNeedsRoomFiveTimesInTheTemporaryFolderAndTwiceInItsOwn) {
  tmw::Manifest manifest;
  manifest.VersionID = "R";
  manifest.Tables.push_back({false, "Т", "", 100, "", true});
  manifest.ScriptsPackage.PackSize = 7;
  const auto release = tmw::MakeReleasePaths(Path("tmp"), "R");
  sandbox_.Write("db/Tamrin.mdb", std::string(1000, 'x'));
  sandbox_.Write("db/Tamrin_LastVer.mdb", std::string(400, 'x'));
  for (const bool is_client : {true, false}) {
    std::int64_t announced = 0;
    std::int64_t estimated = 0;
    for (const auto& need :
         tmw::PlanSpace(manifest, is_client, release, tmw::SpaceMoment::kBeforeDownload)) {
      announced += need.Announced;
      estimated += need.Estimated;
    }
    EXPECT_EQ(announced, is_client ? 0 : 100);
    EXPECT_EQ(estimated, is_client ? 0 : 5000 + 107 * 8 + 100 * 8 + 1000 + 1000 + 600);
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
  EXPECT_EQ(tmw::DescribeObstacles(obstacles),
            folder +
                "\r\nТо же относится к следующему: \"Q\".\r\n\r\nНа месте файла \"a\" находится "
                "папка. Переименуйте ее или перенесите в другое место и запустите обновление еще "
                "раз. Ничего не изменено.");
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
