#include "tests/engine/run_fixture.h"
#include "ui/downloading_form.h"

// A whole run as it is shown in the window.
namespace tests {
namespace {

TEST_F(RunTest, AnUnfinishedInstallationIsSaidToBeOneAndTheNextRunHandsItsVersionOn) {
  processes_.exit_code = 3;          // where there is a registration tool, it fails
  release_.files[0].is_com = "yes";  // and is no library
  Publish();
  tmw::DownloadingForm unfinished([] {});
  unfinished.Execute("TMW", server_.Url(""), "");
  EXPECT_FALSE(unfinished.Updated());
  std::string notes;
  for (const std::string& line : front_end_.windows.log) {
    if (line.starts_with("notes ") && !notes.ends_with(line + "\n")) notes += line + "\n";
  }
  const std::string third = "notes этап 3 из 4|";
  EXPECT_EQ(notes, "notes этап 1 из 4||\nnotes этап 2 из 4||\n" + third + "|\n" + third +
                       "|байт\n" + third + "Программа.dll|байт\n" + third + "help.txt|байт\n" +
                       third + "|байт\n" + third + "|\nnotes этап 4 из 4||\n");
  ASSERT_EQ(front_end_.log.size(), 3U);
  EXPECT_TRUE(front_end_.log[1].starts_with("warning|Ошибка загрузки|Ошибка регистрации файла"));
  EXPECT_TRUE(front_end_.log[2].starts_with(
      "warning|Обновление программы|Обновление установлено не полностью."));
  front_end_.log.clear();
  front_end_.answers = {true};
  release_.files[0].is_com.clear();
  Publish();
  tmw::DownloadingForm finished([] {});
  finished.Execute("TMW", "http://127.0.0.1:" + std::to_string(UnusedPort()), server_.Url(""));
  EXPECT_EQ(front_end_.log.size(), 1U) << front_end_.log.back();
  EXPECT_TRUE(finished.Updated());
  EXPECT_EQ(finished.NewVersion(), "3.6.0.2");
}

}  // namespace
}  // namespace tests
