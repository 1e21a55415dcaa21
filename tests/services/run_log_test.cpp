#include "services/run_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <thread>

#include "foundation/text.h"
#include "platform/factories.h"
#include "ports/log_files.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace {

using namespace tmw;

// The real log in a folder of its own.
class RunLog : public testing::Test {
 protected:
  RunLog() {
    ports_->log_files = files_.get();
    ForgetRunLog();
  }
  ~RunLog() override { ForgetRunLog(); }

  tests::Sandbox sandbox_;
  tests::ScopedVariable state_{tests::kOnWindows ? "LOCALAPPDATA" : "XDG_STATE_HOME",
                               sandbox_.Path()};
  const std::string folder_ = tests::kOnWindows ? "Tamrin/" : "tamrin/";
  std::unique_ptr<ports::LogFiles> files_ = platform::MakeLogFiles();
  tests::ScopedPorts ports_;
};

TEST_F(RunLog, AnEventIsALineForPeopleAndAnObjectForPrograms) {
  EXPECT_EQ(RunLogPath(), "");
  LogEvent("open", {{"address", "ftp://u:s@h/f"}, {"status", 200}, {"text", "Не \"тот\"\r\n\x01"}});
  LogEvent("end", {{"updated", true}, {"version", ""}});
  const std::string path = RunLogPath();
  EXPECT_TRUE(std::filesystem::exists(tests::ToPath(path))) << path;
  const std::string day = R"(\d{4}-\d\d-\d\d)";
  const std::string time = R"(\d\d:\d\d:\d\d\.\d{3})";
  const std::string end = tests::kOnWindows ? "\r\n" : "\n";
  const std::string text = sandbox_.Read(folder_ + "TmWebUpdate.log");
  EXPECT_TRUE(std::regex_match(
      text, std::regex(day + " " + time + R"( [+-]\d\d:\d\d \d+ open address=ftp://u:\*\*\*@h/f )" +
                       R"(status=200 text="Не \\"тот\\"\\r\\n\\u0001")" + end + day + " " + time +
                       R"( [+-]\d\d:\d\d \d+ end updated=true version="")" + end)))
      << text;
  const std::string json = sandbox_.Read(folder_ + "TmWebUpdate.jsonl");
  EXPECT_TRUE(std::regex_search(json, std::regex("^\\{\"time\":\"" + day + "T" + time +
                                                 R"([+-]\d\d:\d\d","process":\d+,"event":"open",)" +
                                                 R"("address":"ftp://u:\*\*\*@h/f","status":200,)" +
                                                 R"("text":"Не \\"тот\\"\\r\\n\\u0001"\})" + "\n")))
      << json;
}

TEST_F(RunLog, WritersTogetherMixNoLinesAndOneOfThemMovesTheFullFileAway) {
  const std::string path = sandbox_.Path("log");
  const std::string old_path = sandbox_.Path("old");
  constexpr int kLines = 300;
  const std::string line = std::string(99, 'x') + "\n";
  std::vector<std::thread> writers;
  for (int writer = 0; writer < 4; ++writer) {
    writers.emplace_back([&] {
      for (int i = 0; i < kLines; ++i)
        EXPECT_TRUE(files_->Append(path, line, 70'000, old_path));
    });
  }
  for (std::thread& writer : writers)
    writer.join();
  // 120,000 bytes: the file has been moved exactly once.
  const std::string all = sandbox_.Read("old") + sandbox_.Read("log");
  EXPECT_EQ(all.size(), 4 * kLines * line.size());
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 4 * kLines);
  EXPECT_GE(sandbox_.Read("old").size(), 70'000U);
  for (const std::string& part : Split(all.substr(0, all.size() - 1), "\n"))
    ASSERT_EQ(part.size(), 99U);
}

TEST_F(RunLog, APlaceThatCannotBeWrittenStopsNothing) {
  sandbox_.Write(tests::kOnWindows ? "Tamrin" : "tamrin", "a file");
  LogEvent("start");
  EXPECT_EQ(RunLogPath(), "");
  ports_->log_files = nullptr;
  LogEvent("start");
}

TEST(Passwords, AreMaskedWhereverTheyStand) {
  const std::pair<const char*, const char*> cases[] = {
      {"http://h:80/a@b", "http://h:80/a@b"},
      {"\"http://u:p@h:80/f\".", "\"http://u:***@h:80/f\"."},
      {"https://u:p@q:r@h/ и ftp://v:w@i", "https://u:***@h/ и ftp://v:***@i"},
      {"http=u:p@h:3128", "http=u:***@h:3128"},
      {"https://h/f?Password=тайна&x=1 pwd=1;", "https://h/f?Password=***&x=1 pwd=***;"},
      {"time 12:30 to a@b", "time 12:30 to a@b"}};
  for (const auto& [text, masked] : cases)
    EXPECT_EQ(WithoutPasswords(text), masked);
}

}  // namespace
