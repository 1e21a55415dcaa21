#include <filesystem>

#include "tests/engine/database_run_fixture.h"
#include "tests/support/linux/small_files_only.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

using FullDiskRunTest = DatabaseRunTest;

// Downloads, both databases, the backup and the installation write in different ways; each of them
// meets the full disk in one of these runs.
TEST_F(FullDiskRunTest, HoweverFullTheDiskIsTheDatabaseIsTheOldOneOrTheRunSucceeds) {
  release_.files[0].content = std::string(30'000, 'x');
  // The database lies elsewhere, and stays there.
  const fs::path link = ToPath(Path("db/Tamrin.mdb"));
  fs::create_directories(ToPath(Path("Учет")));
  fs::rename(link, ToPath(Path("Учет/2026.mdb")));
  fs::create_symlink(ToPath("../Учет/2026.mdb"), link);
  Publish();
  const std::string kept = sandbox_.Read("db/Tamrin.mdb");
  int failed = 0;
  bool is_in_part = false;
  for (rlim_t limit = 2000; !updated_; limit += 4000) {
    ASSERT_LT(limit, rlim_t{1'000'000});
    front_end_.answers = {true};
    {
      const SmallFilesOnly full_disk(limit);
      Run();
    }
    if (updated_) break;
    ++failed;
    is_in_part |= front_end_.log.back().find("\r\nЗапись выполнена частично (2000 вместо ") !=
                  std::string::npos;
    EXPECT_NE(front_end_.log, std::vector<std::string>{}) << limit;
    EXPECT_EQ(sandbox_.Read("db/Tamrin.mdb"), kept) << limit << front_end_.log.back();
  }
  EXPECT_GT(failed, 5);
  EXPECT_TRUE(is_in_part);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(Rows("Учет/2026.mdb", "Книга"), kNewBook);
  EXPECT_EQ(Rows("Учет/2026.mdb", "Заметки"), "7\r\n");
  EXPECT_EQ(sandbox_.Read("Продукт/help.txt"), release_.files[0].content);
}

}  // namespace
}  // namespace tests
