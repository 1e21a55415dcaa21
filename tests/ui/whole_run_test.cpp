#include "tests/engine/run_fixture.h"
#include "ui/downloading_form.h"

namespace tests {
namespace {

using Log = std::vector<std::string>;

// A whole run, started by the window as a user sees it.
TEST_F(RunTest, TheWindowHandsTheRunWhatItNeedsAndBackWhatCameOfIt) {
  Publish();
  tmw::UpdaterSettings settings = tmw::GetUpdaterSettings();
  settings.OldProductVersion = "3.6.0.2";
  tmw::SetUpdaterSettings(settings);
  front_end_.answers = {true, true};
  tmw::DownloadingForm form([] {});
  // Nobody listens at the first address.
  form.Execute("TMW", "http://127.0.0.1:" + std::to_string(UnusedPort()), server_.Url(""));
  EXPECT_TRUE(form.Updated());
  EXPECT_EQ(form.NewVersion(), "3.6.0.2");
  EXPECT_EQ(sandbox_.Read("Продукт/Bin/Программа.dll"), "new program");
  ASSERT_EQ(front_end_.log.size(), 2U);
  EXPECT_TRUE(
      front_end_.log[0].starts_with("question|Обновления не требуется|Текущая версия "
                                    "программы (3.6.0.2)"));
  Log notes;
  for (const std::string& line : front_end_.windows.log) {
    if (line.starts_with("notes ") && (notes.empty() || notes.back() != line))
      notes.push_back(line);
  }
  EXPECT_EQ(notes, (Log{"notes этап 1 из 4||", "notes этап 2 из 4||", "notes этап 3 из 4||",
                        "notes этап 3 из 4||байт", "notes этап 3 из 4|Программа.dll|байт",
                        "notes этап 3 из 4|help.txt|байт", "notes этап 3 из 4||байт",
                        "notes этап 3 из 4||", "notes этап 4 из 4||"}));

  settings.OldProductVersion = "3.6.0.1";
  tmw::SetUpdaterSettings(settings);
  tmw::DownloadingForm again([] {});
  again.Execute("TMW", server_.Url(""), "");
  EXPECT_FALSE(again.Updated());
  EXPECT_EQ(again.NewVersion(), "3.6.0.2");
}

}  // namespace
}  // namespace tests
