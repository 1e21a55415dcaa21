#include "database/open_mdb.h"

#include "tests/database/build_fixture.h"
#include "tests/fakes/scripted_engine.h"
#include "tests/support/processes.h"
#include "tests/support/scripted_server.h"

namespace tests {
namespace {

constexpr const char* kWhat = "рабочей копии базы данных";

class OpenMdbTest : public BuildTest {
 protected:
  const std::string path = sandbox.Path("b.mdb");
};

TEST_F(OpenMdbTest, AMissingFileAndAForeignOneAreTold) {
  EXPECT_EQ(tmw::OpenMdb(path, kWhat, true, false), nullptr);
  sandbox.Write("b.mdb", "это не база данных, а просто текст");
  EXPECT_EQ(tmw::OpenMdb(path, kWhat, true, false), nullptr);
  const std::string title = "warning|Ошибка обновления базы данных|";
  EXPECT_EQ(
      front_end.log,
      (std::vector<std::string>{
          title + "Отсутствует или не найден файл рабочей копии базы данных:\r\n" + path,
          title + "Файл рабочей копии базы данных (" + path +
              ") невозможно открыть по следующей причине:\r\nНеизвестный формат базы данных \"" +
              path +
              "\": файл короче одной страницы.\r\n\r\nДальнейшая работа программы обновления невозможна."}));
  EXPECT_TRUE(clock.sleeps.empty());
}

TEST_F(OpenMdbTest, AFileInUseIsRetriedTenTimesAndThenTheUserIsAsked) {
  ports->database->CreateDatabase(path)->Close();
  const std::int32_t holder =
      StartChild("lock \"" + path + "\" shared \"" + sandbox.Path("report") + "\" sleep 20000");
  ASSERT_EQ(AwaitLine(sandbox, "report"), "locked");
  front_end.answers = {true, true, false};
  EXPECT_EQ(tmw::OpenMdb(path, kWhat, true, false), nullptr);
  std::vector<std::int32_t> waits(10, 1000);
  waits.insert(waits.end(), {500, 500});
  EXPECT_EQ(clock.sleeps, waits);
  EXPECT_EQ(front_end.event_rounds, 2);
  ASSERT_EQ(front_end.log.size(), 3U);
  EXPECT_EQ(front_end.log[2],
            "question|Файл уже используется|Файл рабочей копии базы данных (" + path +
                ") не может быть открыт в монопольном режиме, поскольку он уже открыт и "
                "используется еще какой-то программой помимо программы обновления. \r\n\r\n"
                "Для дальнейшей работы программы обновления этот файл необходимо открыть в "
                "монопольном режиме.\r\n\r\n"
                "Нажмите \"Да\", чтобы повторить попытку (перед этим необходимо найти и закрыть "
                "программу, использующую нужный файл). Нажмите \"Нет\", чтобы прервать работу "
                "программы обновления.\r\n\r\nПовторить попытку?");

  front_end.answers.assign(100, true);
  front_end.on_events = [&] {
    if (front_end.event_rounds == 3) KillProcess(holder);
    Peer::Pause(20);
  };
  EXPECT_NE(tmw::OpenMdb(path, kWhat, true, false), nullptr) << "the holder let go meanwhile";
}

TEST_F(OpenMdbTest, EveryNumberForAFileThatOthersHaveOpenIsRetriedAndNoOther) {
  ports->database->CreateDatabase(path)->Close();
  ScriptedEngine engine(*ports->database);
  ports->database = &engine;
  const struct {
    std::int32_t number;
    bool is_retried;
  } cases[] = {{3006, true}, {3045, true},  {3196, true},  {3356, true},  {3704, true},
               {3734, true}, {3051, false}, {3024, false}, {3343, false}, {3026, false}};
  for (const auto& c : cases) {
    engine.open_failures = {c.number};
    EXPECT_EQ(tmw::OpenMdb(path, kWhat, true, false) != nullptr, c.is_retried) << c.number;
    engine.open_failures = {c.number};
    EXPECT_EQ(tmw::OpenMdb(path, kWhat, false, false), nullptr) << c.number;
  }
}

}  // namespace
}  // namespace tests
