#include "services/advice.h"

#include "platform/factories.h"
#include "ports/log_files.h"
#include "services/run_log.h"
#include "tests/engine/run_fixture.h"

namespace tests {
namespace {

using tmw::FailureKind;

// The advice that a run ends with, for every way in which a file can fail to arrive.
TEST_F(RunTest, AFailedRunEndsWithAdviceOnItsCause) {
  const struct {
    const char* path;    // of the file that fails
    std::string answer;  // in place of the file; empty: the connection breaks off
    FailureKind kind;
  } cases[] = {
      {"server/TMW_version.dat", "401 No", FailureKind::kLogin},
      {"server/TMW_version.dat", "403 No", FailureKind::kForbidden},
      {"server/TMW_version.dat", "404 No", FailureKind::kNotFound},
      {"server/TMW_version.dat", "407 No", FailureKind::kProxyLogin},
      {"server/TMW_version.dat", "503 No", FailureKind::kServerFault},
      {"server/TMW_version.dat", "418 No", FailureKind::kRefused},
      {"server/TMW_version.dat", "200 OK\r\nContent-Length: 9\r\n\r\n3.6",
       FailureKind::kInterrupted},
      {"server/TMW_version.dat", "200 OK\r\n\r\n \r\n<html>", FailureKind::kLoginPage},
      {"server/TMW_version.dat", "200 OK\r\n\r\n5", FailureKind::kWrongData},
      {"server/TMW_links.dat", "200 OK\r\n\r\n<html>", FailureKind::kLoginPage},
      {"server/TMW_3.6.0.2/_PackageManifest.tmz", "200 OK\r\n\r\nx", FailureKind::kDamagedFile},
      {"server/TMW_3.6.0.2/f1.tmz", "200 OK\r\n\r\nx", FailureKind::kDamagedFile},
  };
  Publish();
  for (const auto& c : cases) {
    on_answer_ = [&](Peer& peer, const std::string& path) {
      if (path != c.path) return false;
      peer.Send("HTTP/1.1 " + c.answer + "\r\n\r\n");
      return true;
    };
    front_end_.answers = {true};
    front_end_.advices.clear();
    Run();
    ASSERT_EQ(front_end_.advices.size(), 1U) << c.path << c.answer;
    EXPECT_EQ(front_end_.advices[0], tmw::AdviceFor(c.kind)) << c.path << c.answer;
  }
  url_ = "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/";
  front_end_.advices.clear();
  Run();
  EXPECT_EQ(front_end_.advices[0], tmw::AdviceFor(FailureKind::kNoConnection));
}

// The text of the log after a run.
TEST_F(RunTest, TheLogTellsWhatARunDecidedAndDid) {
  const ScopedVariable state(kOnWindows ? "LOCALAPPDATA" : "XDG_STATE_HOME", sandbox_.Path());
  const auto files = platform::MakeLogFiles();
  ports_->log_files = files.get();
  tmw::ForgetRunLog();
  old_version_ = "3.6.0.1";
  release_.dict = "Справочник1";
  release_.user = "Таблица1";
  Publish();
  sandbox_.Write("Продукт/Bin/Программа.dll", "old program, longer");
  Run();
  EXPECT_TRUE(updated_);
  const std::string log =
      sandbox_.Read(kOnWindows ? "Tamrin/TmWebUpdate.log" : "tamrin/TmWebUpdate.log");
  tmw::ForgetRunLog();
  const std::string address = server_.Url("/TMW_3.6.0.2");
  std::size_t at = 0;
  for (const std::string& entry : std::vector<std::string>{
           " open address=" + server_.Url("/TMW_version.dat"), " answer status=200",
           " loaded address=" + server_.Url("/TMW_version.dat") + " bytes=",
           " versions installed=3.6.0.1 offered=3.6.0.2 is_updater_old=false",
           " manifest address=" + address + " release=", " needed file=",
           " needed table=Справочник1 bytes=10", " need files=true tables=true",
           " question title=\"Обновление ", " answer title=\"Обновление программы\" yes=true",
           " open address=" + address + "/f1.tmz", " loaded address=" + address + "/f1.tmz bytes=",
           " checked file=", " good=true", " removed file=", " installed file="}) {
    const std::size_t found = log.find(entry, at);
    ASSERT_NE(found, std::string::npos) << entry << "\n" << log;
    at = found;
  }
}

}  // namespace
}  // namespace tests
