#include "engine/update_list.h"

#include "packages/hash_api.h"
#include "tests/engine/run_fixture.h"
#include "tests/support/caught.h"

namespace tests {
namespace {

using Log = std::vector<std::string>;

class UpdateListTest : public RunTest {
 protected:
  UpdateListTest() {
    sandbox_.Write("current", "abc");
    sandbox_.Write("other", "abd");
    sandbox_.Write("longer", "abcd");
    for (const char* const name : {"current", "other", "longer", "missing"})
      AddFile(name, tmw::GetFileHash(sandbox_.Path("current")));
    AddFile("current", "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD");
    const auto database =
        ports::CurrentPorts().database->OpenDatabase(Path("db/Tamrin.mdb"), true, false);
    for (const char* const table : {"Current", "Other"})
      database->Execute("create table " + std::string(table) + " (A long)", true);
    database->Close();
    const std::string text = "Table:Current\r\nField:A|Long|4\r\nRows\r\nEndRows\r\nEndTable\r\n";
    for (const char* const name : {"Current", "Other", "Missing"})
      manifest_.Tables.push_back({false, name, "", 1000, tmw::GetStringHash(text), false});
    manifest_.Tables.push_back({true, "User", "", 0, "", false});
    manifest_.ScriptsPackage.PackSize = 10'000;
    manifest_.StructuresPackage.PackSize = 20'000;
  }

  void AddFile(const std::string& name, const std::string& hash) {
    tmw::WuFileNode file;
    file.OrigName = name;
    file.Folder = sandbox_.Path();
    file.OrigSize = 3;
    file.SrvSize = 1;
    file.Hash = hash;
    manifest_.Files.push_back(file);
  }

  bool Build(bool is_client) {
    return tmw::BuildUpdateList(manifest_, is_client, listener_, need_);
  }

  tmw::Manifest manifest_;
  tmw::UpdateNeed need_;
};

TEST_F(UpdateListTest, MarksWhatDiffersAndAddsUpWhatIsLoaded) {
  // A client loads no tables and no packages, but knows that tables are out of date.
  for (const auto& [is_client, volume] : {std::pair(false, 32'004), {true, 4}}) {
    ASSERT_TRUE(Build(is_client));
    std::string marks;
    for (const auto& file : manifest_.Files)
      marks += file.NeedUpdate ? "+" : "-";
    for (const auto& table : manifest_.Tables)
      marks += table.NeedUpdate ? "+" : "-";
    EXPECT_EQ(marks, "-++++-++-");
    EXPECT_TRUE(need_.Files && need_.Tables);
    EXPECT_EQ(need_.DownloadVolume, volume);
    EXPECT_EQ(listener_.positions, (std::vector<std::int32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    listener_.positions.clear();
  }
  EXPECT_TRUE(listener_.Has("range 9") && listener_.Has("sub Компонента: missing") &&
              listener_.Has("sub Справочник: Other") && listener_.Has("sub Таблица: User"));
  manifest_.Files.resize(1);
  manifest_.Tables.resize(1);
  ASSERT_TRUE(Build(false));
  EXPECT_FALSE(need_.Files || need_.Tables);
  EXPECT_EQ(need_.DownloadVolume, 30'000) << "the packages are always loaded";
}

TEST_F(UpdateListTest, ACancelAndADatabaseThatCannotBeOpenedEndIt) {
  for (const char* const line : {"sub Компонента: other", "sub Справочник: Other"}) {
    listener_ = RunListener();
    listener_.cancel_at = line;
    EXPECT_FALSE(Build(false));
    EXPECT_EQ(Log(listener_.log.end() - 4, listener_.log.end()),
              (Log{line, "main ", "sub ", "range 0"}));
  }
  EXPECT_EQ(front_end_.log, Log{});
  listener_ = RunListener();
  std::filesystem::remove(ToPath(Path("db/Tamrin.mdb")));
  EXPECT_FALSE(Build(true));
  ASSERT_EQ(front_end_.log.size(), 1U);
  EXPECT_TRUE(front_end_.log[0].starts_with("warning|Ошибка обновления базы данных|"));
}

TEST_F(UpdateListTest, AVolumeBeyondTwoGigabytesIsAnError) {
  manifest_.ScriptsPackage.PackSize = 2'147'483'647 - 22'004;
  EXPECT_TRUE(Build(false));
  EXPECT_EQ(need_.DownloadVolume, 2'147'483'647);
  ++manifest_.ScriptsPackage.PackSize;
  const auto error = Caught([&] { static_cast<void>(Build(false)); });
  EXPECT_EQ(error.Number, tmw::kOverflowErrorNumber);
  EXPECT_EQ(error.Description, "Переполнение: объем загрузки превышает 2 гигабайта.");
}

}  // namespace
}  // namespace tests
