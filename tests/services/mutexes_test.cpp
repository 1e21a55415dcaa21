#include "services/mutexes.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/fakes/hand_clock.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/caught.h"
#include "tests/support/environment.h"
#include "tests/support/processes.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

using Log = std::vector<std::string>;

constexpr const char* kOpenQuestion =
    "question|Запуск программы обновления|Для начала работы программы обновления необходимо "
    "закрыть приложение \"Tamrin: Fsk\".\r\n\r\nВ данный момент приложение открыто. Продолжать "
    "ожидание?";
constexpr const char* kCopiesQuestion =
    "question|Запуск программы обновления|Одновременно может работать только одна копия программы "
    "обновления. В данный момент запущено несколько копий этой программы. Имеется возможность либо "
    "подождать, пока лишние копии программы обновления не будут закрыты, либо прекратить работу "
    "программы обновления.\r\n\r\nПодождать, пока лишние копии программы обновления не будут "
    "закрыты?";

class Mutexes : public testing::Test {
 protected:
  Mutexes() {
    ports_->clock = &clock_;
    ports_->front_end = &front_end_;
  }
  ~Mutexes() override { ReleaseUpdaterLock(); }

  // What a process that tries to take the mutex gets: "held" or "exists". It lives a minute.
  std::string StartHolder(const std::string& file, std::int32_t& id) {
    id = tests::StartChild("hold " + name_ + " \"" + sandbox_.Path(file) + "\" sleep 60000");
    return tests::AwaitLine(sandbox_, file);
  }

  tests::ScopedPorts ports_;
  tests::HandClock clock_;
  tests::ScriptedFrontEnd front_end_;
  tests::Sandbox sandbox_;
  tests::ScopedVariable lock_folder_{"TMW_LOCK_FOLDER", sandbox_.Path()};
  std::string name_ = "Local\\Test_" + std::to_string(std::random_device()());
};

TEST_F(Mutexes, OnlyAnOpenApplicationIsPolledTenTimesThenTwenty) {
  EXPECT_TRUE(WaitUntilAppMutexClosed(name_, "Tamrin: Fsk"));
  EXPECT_TRUE(clock_.sleeps.empty());
  auto held = ports_->mutexes->Create(name_, true);
  front_end_.answers = {true, true, false};
  EXPECT_FALSE(WaitUntilAppMutexClosed(name_, "Tamrin: Fsk"));
  EXPECT_EQ(clock_.sleeps, std::vector<std::int32_t>(10 + 20 + 20, 200));
  EXPECT_EQ(front_end_.log, Log(3, kOpenQuestion));

  clock_.on_sleep = [&] {
    if (clock_.sleeps.size() == 53) held.value.mutex.reset();
  };
  EXPECT_TRUE(WaitUntilAppMutexClosed(name_, "Tamrin: Fsk"));
  EXPECT_EQ(clock_.sleeps.size(), 53U);
}

TEST_F(Mutexes, ASecondUpdaterAsksUntilTheFirstIsKilled) {
  std::int32_t first = 0;
  ASSERT_EQ(StartHolder("first", first), "held");
  front_end_.answers = {true, false};
  EXPECT_FALSE(LockUpdaterMutex(name_));
  EXPECT_EQ(clock_.sleeps, std::vector<std::int32_t>(10 + 20, 200));
  EXPECT_EQ(front_end_.log, Log(2, kCopiesQuestion));

  clock_.on_sleep = [&] {
    if (clock_.sleeps.size() == 35) tests::KillProcess(first);
  };
  front_end_.answers = std::deque<bool>(1000, true);
  EXPECT_TRUE(LockUpdaterMutex(name_));
}

TEST_F(Mutexes, OneOfThreeProcessesHasTheLockAtATime) {
  ASSERT_TRUE(LockUpdaterMutex(name_));
  ASSERT_TRUE(LockUpdaterMutex(name_));  // drops its own lock first
  std::int32_t second = 0;
  std::int32_t third = 0;
  EXPECT_EQ(StartHolder("second", second), "exists");
  tests::KillProcess(second);
  ReleaseUpdaterLock();
  EXPECT_EQ(StartHolder("third", third), "held");
  EXPECT_EQ(StartHolder("again", second), "exists");
  EXPECT_FALSE(LockUpdaterMutex(name_));
  tests::KillProcess(third);
  tests::KillProcess(second);
}

TEST_F(Mutexes, UsersKeepEachOtherOutByAFileInTheProductsFolder) {
  const tests::Sandbox root;
  EXPECT_TRUE(LockProductFolder(root.Path()));
  ReleaseUpdaterLock();
  const std::int32_t other =
      tests::StartChild("lock \"" + root.Path("TmWebUpdate.lock") + "\" exclusive \"" +
                        root.Path("report") + "\" sleep 20000");
  ASSERT_EQ(tests::AwaitLine(root, "report"), "locked");
  front_end_.answers = {false};
  EXPECT_FALSE(LockProductFolder(root.Path()));
  EXPECT_EQ(front_end_.log, Log(1, kCopiesQuestion));
  tests::KillProcess(other);
  EXPECT_TRUE(LockProductFolder(root.Path("no such folder")));
}

TEST_F(Mutexes, AMutexThatCannotBeCreatedCountsAsOpenButRefusesTheLock) {
  const std::string impossible = tests::kOnWindows ? "Nowhere\\a\\b" : "Local\\a/b";
  EXPECT_FALSE(WaitUntilAppMutexClosed(impossible, "Tamrin: Fsk"));
  const auto error = tests::Caught([&] { LockUpdaterMutex(impossible); });
  EXPECT_NE(error.Number, 1001);
  EXPECT_NE(error.Source.find("::miMutexes.LockUpdaterMutex]"), std::string::npos) << error.Source;
}

}  // namespace
}  // namespace tmw
