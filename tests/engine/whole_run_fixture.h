#pragma once

#include <filesystem>
#include <map>

#include "tests/engine/database_run_fixture.h"
#include "tests/fakes/faulty_file_system.h"

namespace tests {

namespace fs = std::filesystem;

// A server installation that is behind the release, on a disk that can fail.
class WholeRunTest : public DatabaseRunTest {
 protected:
  WholeRunTest() {
    release_.files.insert(release_.files.begin(), {"Программа.dll", "new program"});
    release_.files.push_back({"tmwebupdate.EXE", "new updater", "{p}tm"});
    good_ = release_;
    Publish();
    Restore();
  }

  // As if no run had been tried yet.
  void Restore() {
    EndFaults();
    for (const char* const folder : {"Продукт", "db", "tmp"})
      fs::remove_all(ToPath(Path(folder)));
    fs::create_directories(ToPath(Path("tmp")));
    sandbox_.Write("Продукт/Bin/Программа.dll", "old program");
    sandbox_.Write("Продукт/help.txt", "old help");
    sandbox_.Write("Продукт/tm/tmwebupdate.EXE", "old updater");
    sandbox_.Write("db/Tamrin_LastVer.mdb", "old");
    sandbox_.Write("db/DBUpdates/1.xml", "old");
    sandbox_.Write("db/Tamrin.mdb", kept_);
  }

  void EndFaults() {
    holder_.reset();
    disk_ = std::make_unique<FaultyFileSystem>(real_disk_);
    ports_->files = disk_.get();
    for (std::string* const text : {&url_, &fallback_url_, &cancel_at_, &old_version_})
      text->clear();
    on_line_ = nullptr;
    front_end_.answers = {true};
  }

  void PublishGood() {
    release_ = good_;
    Publish();
  }

  void When(const std::string& reported, std::function<void()> action) {
    on_line_ = [reported, action](const std::string& line) {
      if (line == reported) action();
    };
  }

  void HoldDatabase() {
    holder_ = ports::CurrentPorts().database->OpenDatabase(Path("db/Tamrin.mdb"), false, true);
  }

  void Damage(const std::string& name, std::size_t length = std::string::npos) {
    const std::string file = "server/TMW_3.6.2.0/" + name;
    std::string bytes = sandbox_.Read(file).substr(0, length);
    bytes[bytes.size() / 2] ^= '\x20';
    sandbox_.Write(file, bytes);
  }

  // The manifest stays the old one.
  void ServeInstead(const std::string& content) {
    const std::string list = sandbox_.Read("server/TMW_3.6.2.0/_PackageManifest.tmz");
    release_.files[0].content = content;
    Publish();
    sandbox_.Write("server/TMW_3.6.2.0/_PackageManifest.tmz", list);
  }

  std::map<std::string, std::string> Installed() const {
    std::map<std::string, std::string> files;
    for (const char* const folder : {"Продукт", "db"}) {
      for (const auto& entry : fs::recursive_directory_iterator(ToPath(Path(folder)))) {
        const std::string path = FromPath(entry.path());
        const bool is_mark = path.ends_with("TMW_Installing.txt");
        if (entry.is_regular_file() && !is_mark) files[path] = tmw::ReadFileBytes(path);
      }
    }
    return files;
  }

  void RunUnattended() {
    tmw::UpdaterSettings settings = tmw::GetUpdaterSettings();
    settings.NoFinalMessage = true;
    tmw::SetUpdaterSettings(settings);
    Run();
    SetMode(false);
  }

  bool IsMarked() const {
    return sandbox_.Has("tmp/TMW_WebUpdate/R 3.6.0.2/_Installing.txt") &&
           sandbox_.Has("Продукт/TMW_Installing.txt");
  }

  void ExpectAllNew() const {
    EXPECT_EQ(sandbox_.Read("Продукт/Bin/Программа.dll"), "new program");
    EXPECT_EQ(sandbox_.Read("Продукт/help.txt"), "new help");
    EXPECT_EQ(sandbox_.Read("Продукт/tm/tmwebupdate.EXE"), "new updater");
    EXPECT_EQ(Rows("db/Tamrin.mdb", "DBVersion"), "3|6|2\r\n");
    EXPECT_EQ(Rows("db/Tamrin.mdb", "Книга"), kNewBook);
    EXPECT_EQ(Rows("db/Tamrin.mdb", "Заметки"), "7\r\n");
    EXPECT_EQ(Rows("db/Tamrin_LastVer.mdb", "DBVersion"), "3|6|2\r\n");
    EXPECT_EQ(sandbox_.Read("db/DBUpdates/1.xml"), good_.scripts[0].second);
    EXPECT_TRUE(sandbox_.Has("db/Tamrin_0.zip"));
    EXPECT_FALSE(sandbox_.Has("db/Tamrin.mdb.new"));
    EXPECT_FALSE(sandbox_.Has("tmp/TMW_WebUpdate/R 3.6.0.2/_Installing.txt"));
    EXPECT_FALSE(sandbox_.Has("Продукт/TMW_Installing.txt"));
  }

  ports::FileSystem& real_disk_ = *ports_->files;
  std::unique_ptr<FaultyFileSystem> disk_;
  Release good_;
  const std::string kept_ = sandbox_.Read("db/Tamrin.mdb");
  std::unique_ptr<ports::Database> holder_;
};

}  // namespace tests
