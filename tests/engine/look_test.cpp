#include <filesystem>
#include <functional>
#include <tuple>

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

TEST(Look, OneBoxNamesEveryKindOfObstacleAndFiveOfAKind) {
  const std::string reason = tmw::GetApiErrorText(kDenied, "");
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
