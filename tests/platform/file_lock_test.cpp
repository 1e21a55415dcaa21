#include "ports/file_lock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "ports/ports.h"
#include "tests/support/processes.h"
#include "tests/support/sandbox.h"

namespace {

using ports::FileLockMode;
using ports::FileLockVerdict;

ports::FileLockResult TryLock(const std::string& path, FileLockMode mode) {
  auto result = ports::CurrentPorts().file_locks->TryLock(path, mode);
  EXPECT_TRUE(result) << result.code;
  return std::move(result.value);
}

TEST(FileLocks, HoldersInOneProcessCountLikeHoldersInTwo) {
  const tests::Sandbox sandbox;
  const std::string path = sandbox.Write("файл", "x");
  auto first = TryLock(path, FileLockMode::kShared);
  auto second = TryLock(path, FileLockMode::kShared);
  EXPECT_EQ(second.verdict, FileLockVerdict::kLocked);
  first.lock.reset();
  EXPECT_EQ(TryLock(path, FileLockMode::kExclusive).verdict, FileLockVerdict::kHeldShared);
  second.lock.reset();
  const auto all = TryLock(path, FileLockMode::kExclusive);
  EXPECT_EQ(all.verdict, FileLockVerdict::kLocked);
  EXPECT_EQ(TryLock(path, FileLockMode::kShared).verdict, FileLockVerdict::kHeldExclusively);
  EXPECT_EQ(TryLock(path, FileLockMode::kExclusive).verdict, FileLockVerdict::kHeldExclusively);
  EXPECT_EQ(sandbox.Read("файл"), "x") << "the content stays readable";
  EXPECT_EQ(TryLock(sandbox.Path("нет"), FileLockMode::kShared).verdict, FileLockVerdict::kMissing);
}

TEST(FileLocks, AnotherProcessHoldsUntilItDies) {
  const struct {
    const char* mode;
    FileLockVerdict for_all;
    FileLockVerdict for_sharing;
  } cases[] = {
      {"shared", FileLockVerdict::kHeldShared, FileLockVerdict::kLocked},
      {"exclusive", FileLockVerdict::kHeldExclusively, FileLockVerdict::kHeldExclusively},
  };
  for (const auto& c : cases) {
    const tests::Sandbox sandbox;
    const std::string path = sandbox.Write("файл", "x");
    const std::int32_t holder = tests::StartChild("lock \"" + path + "\" " + c.mode + " \"" +
                                                  sandbox.Path("report") + "\" sleep 20000");
    ASSERT_EQ(tests::AwaitLine(sandbox, "report"), "locked");
    EXPECT_EQ(TryLock(path, FileLockMode::kExclusive).verdict, c.for_all) << c.mode;
    EXPECT_EQ(TryLock(path, FileLockMode::kShared).verdict, c.for_sharing) << c.mode;
    tests::KillProcess(holder);
    auto verdict = FileLockVerdict::kMissing;
    for (int i = 0; i < 500 && verdict != FileLockVerdict::kLocked; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      verdict = TryLock(path, FileLockMode::kExclusive).verdict;
    }
    EXPECT_EQ(verdict, FileLockVerdict::kLocked) << c.mode;
  }
}

}  // namespace
