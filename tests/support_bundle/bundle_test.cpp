#include <gtest/gtest.h>

#include <map>

#include "database/db_version.h"
#include "foundation/crc32.h"
#include "packages/hash_api.h"
#include "packages/zip_listing.h"
#include "platform/factories.h"
#include "ports/database.h"
#include "ports/log_files.h"
#include "services/product_settings.h"
#include "support/program.h"
#include "support/report.h"
#include "tests/fakes/memory_settings.h"
#include "tests/fakes/recording_processes.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace tests {
namespace {

constexpr const char* kGeneral = "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\";
constexpr const char* kUpdate = "SOFTWARE\\Kestrel Soft\\Tamrin\\AutoUpdate\\";

// An installation whose last update was interrupted, seen by somebody without a terminal.
class SupportBundle : public testing::Test {
 protected:
  SupportBundle() {
    ports_->settings = &settings_;
    ports_->front_end = &front_end_;
    ports_->processes = &processes_;
    ports_->log_files = log_files_.get();
    tmw::ForgetProductPaths();
    settings_.Set(ports::SettingsRoot::kMachine, kGeneral + std::string("RootPath"),
                  sandbox_.Path("root"));
    settings_.Set(ports::SettingsRoot::kMachine, kGeneral + std::string("DataBasePath"),
                  sandbox_.Path("db"));
    settings_.Set(ports::SettingsRoot::kUser, kUpdate + std::string("ProxyServer"),
                  std::string("u:тайна@proxy:3128"));
    settings_.Set(ports::SettingsRoot::kUser, kUpdate + std::string("ProxyType"), 3);
    sandbox_.Write("root/tm/same.dll", "same");
    sandbox_.Write("root/tm/other.dll", "other");
    sandbox_.Write("db/.keep", "");
    const auto database =
        ports::CurrentPorts().database->CreateDatabase(sandbox_.Path("db/Tamrin.mdb"));
    database->Execute(
        "create table DBVersion (MajorVersion long, MinorVersion long, "
        "BuildNumber long)",
        true);
    database->Execute("insert into DBVersion values (3, 6, 117)", true);
    database->Execute("create table Книги (Название text(20))", true);
    database->Execute("insert into Книги values ('Секрет')", true);
    database->Close();
  }
  ~SupportBundle() override { tmw::ForgetProductPaths(); }

  Sandbox sandbox_;
  ScopedVariable temporary_{kOnWindows ? "TMP" : "TMPDIR", sandbox_.Path("tmp")};
  ScopedVariable state_{kOnWindows ? "LOCALAPPDATA" : "XDG_STATE_HOME", sandbox_.Path("state")};
  std::string made_ = sandbox_.Write("tmp/.keep", "") + sandbox_.Write("state/.keep", "");
  ScopedPorts ports_;
  MemorySettings settings_;
  ScriptedFrontEnd front_end_;
  RecordingProcesses processes_;
  std::unique_ptr<ports::LogFiles> log_files_ = platform::MakeLogFiles();
};

TEST_F(SupportBundle, ReportsTheInstallationWithoutPasswordsAndBooks) {
  const std::string manifest =
      sandbox_.Write("manifest.xml",
                     "<?xml version=\"1.0\"?><KSUpdateManifest Version=\"3.6.0.2\"><Files>"
                     "<Folder name=\"{p}/tm\"><File OrigName=\"same.dll\" Hash=\"" +
                         tmw::GetFileHash(sandbox_.Path("root/tm/same.dll")) +
                         "\"/><File OrigName=\"other.dll\" Hash=\"00\"/>"
                         "<File OrigName=\"gone.dll\" Hash=\"00\"/></Folder></Files>"
                         "</KSUpdateManifest>");
  sandbox_.Write("root/TMW_LastRollback.txt",
                 "\xEF\xBB\xBF"
                 "2026-11-22|3.6.2.1|3.6.0.4|\r\n");
  const std::string report = support::MakeReport(manifest);
  for (const char* const line :
       {"\r\n  SOFTWARE\\Kestrel Soft\\Tamrin\\AutoUpdate\\ProxyServer = \"u:***@proxy:3128\"\r\n",
        "\\ProxyType = 3\r\n", "\\NoFtp = не задан\r\n", "\r\nВерсия: 3.6.117\r\n",
        "\r\n  Книги: 1\r\n", "\r\nПоследний возврат: 2026-11-22|3.6.2.1|3.6.0.4|\r\n",
        "\r\n3.6.0.2\r\nсовпадает\t", "same.dll\t", "\r\nотличается\t", "other.dll\t",
        "\r\nотсутствует\t"}) {
    EXPECT_NE(report.find(line), std::string::npos) << line << "\n" << report;
  }
  for (const char* const secret : {"тайна", "Секрет", "Не удалось"})
    EXPECT_EQ(report.find(secret), std::string::npos) << report;
  std::filesystem::remove(ToPath(sandbox_.Path("db/Tamrin.mdb")));
  const std::string damaged = support::MakeReport(sandbox_.Path("absent"));
  EXPECT_NE(damaged.find("\r\n== База данных\r\nНе удалось получить: "), std::string::npos);
  EXPECT_NE(damaged.find("other.dll\t"), std::string::npos) << "the sections after it are there";
}

TEST_F(SupportBundle, IsSavedWhereTheUserWantsItAndLeavesNothingElse) {
  const std::string state = kOnWindows ? "state/Tamrin/" : "state/tamrin/";
  ASSERT_TRUE(log_files_->Folder().ok);
  sandbox_.Write(state + "TmWebUpdate.log", "open address=http://u:тайна@h/\n");
  sandbox_.Write("tmp/TMW_WebUpdate/TMW_links.dat", "http://h/");
  const std::string target = sandbox_.Path("Для поддержки.zip");
  front_end_.texts = {target};
  EXPECT_EQ(support::Run({}), 0);
  ASSERT_EQ(front_end_.log.size(), 2U);
  EXPECT_TRUE(front_end_.log[0].starts_with("save|Сведения для поддержки|TmSupport-2"));
  EXPECT_EQ(front_end_.log[1], "information|Сведения для поддержки|Сведения сохранены в файле \"" +
                                   target + "\".\r\nОтправьте этот файл в поддержку.");
  std::map<std::string, std::uint32_t> sums;
  const auto entries = tmw::TryListZip(target);
  ASSERT_TRUE(entries);
  for (const tmw::ZipListing& entry : *entries)
    sums[entry.Name] = entry.Crc;
  ASSERT_EQ(sums.size(), 3U);
  EXPECT_TRUE(sums.contains("report.txt"));
  EXPECT_EQ(sums["TmWebUpdate.log"], tmw::UpdateCrc32(0, "open address=http://u:***@h/\n"));
  EXPECT_EQ(sums["TMW_links.dat"], tmw::UpdateCrc32(0, "http://h/"));
  const auto left = std::filesystem::directory_iterator(ToPath(sandbox_.Path("tmp")));
  EXPECT_EQ(std::distance(begin(left), end(left)), 2);

  front_end_.log.clear();
  EXPECT_EQ(support::Run({}), 0) << "the user has changed their mind";
  EXPECT_EQ(front_end_.log.size(), 1U);
  EXPECT_EQ(support::Run({"--output", sandbox_.Path("absent/a.zip")}), 1);
  EXPECT_TRUE(front_end_.log.back().starts_with("warning|Сведения для поддержки|"));
  EXPECT_EQ(support::Run({"--bad"}), 2);
}

}  // namespace
}  // namespace tests
