#include <filesystem>
#include <fstream>

#include "foundation/version.h"
#include "platform/factories.h"
#include "ports/companion_library.h"
#include "ports/file_system.h"
#include "tests/engine/run_fixture.h"
#include "tests/fakes/faulty_file_system.h"
#include "tests/fakes/scripted_file_probe.h"

namespace tests {
namespace {

using Log = std::vector<std::string>;

const std::string kError = "warning|Ошибка загрузки|";

class SelfUpdateTest : public RunTest {
 protected:
  SelfUpdateTest() {
    std::filesystem::create_directories(ToPath(Path("Продукт/tm")));
    // Its files of these names are not the updater's.
    std::filesystem::current_path(ToPath(sandbox_.Path()));
    processes_.own_program = Path("Продукт/tm/" + program_);
    processes_.own_arguments = "-w http://x/ -e \"Tamrin\"";
    companion_ = tmw::SplitFileName(ports::CurrentPorts().companion->Path()).FileName();
    for (const std::string& name : {program_, companion_})
      sandbox_.Write(name, "planted");
  }
  ~SelfUpdateTest() override { std::filesystem::current_path(folder_before_); }

  // Returns true if the run has ended this process after starting another.
  bool Restarts() {
    Run();
    EXPECT_EQ(processes_.waits, 0);
    EXPECT_TRUE(!has_exited_ || listener_.Has("main Перезапуск программы обновления..."));
    return has_exited_;
  }

  std::string Temp(const std::string& name) const {
    return Path(tmw::NativePath("tmp/TMW_WebUpdate/" + name));
  }

  void PublishUpdater(const std::string& name) {
    release_.needed_updater = "1.9999";
    release_.updater_components = {{name, sandbox_.Write("new updater", "new updater")},
                                   {"extra.dll", sandbox_.Write("extra", "extra")}};
    Publish();
  }

  std::string program_ = kOnWindows ? "TmWebUpdate.exe" : "TmWebUpdate";
  std::string companion_;
  std::filesystem::path folder_before_ = std::filesystem::current_path();
};

TEST_F(SelfUpdateTest, AFirstCopyRestartsFromTheTemporaryFolder) {
  SetMode(true, false);
  product_version_.version = "3.5.0.1";
  EXPECT_FALSE(Restarts());
  const std::string here = kOnWindows ? ".\\" : "./";
  const std::string missing = "\", необходимый для работы программы обновления, не найден.";
  EXPECT_EQ(front_end_.log, Log{kError + "Файл \"" + here + program_ + missing});
  sandbox_.Write("Продукт/tm/" + program_, "program");
  EXPECT_FALSE(Restarts());
  EXPECT_EQ(front_end_.log, Log{kError + "Файл \"" + here + companion_ + missing});
  sandbox_.Write("Продукт/tm/" + companion_, "library");
  std::filesystem::create_directories(ToPath(Temp(companion_)));
  EXPECT_FALSE(Restarts());
  EXPECT_TRUE(front_end_.log.at(0).starts_with("error|Ошибка копирования")) << front_end_.log[0];
  std::filesystem::remove(ToPath(Temp(companion_)));
  ASSERT_TRUE(Restarts());
  EXPECT_TRUE(listener_.Has("sub Файл " + companion_ + "..."));
  const std::string copy = Temp(program_);
  EXPECT_EQ(processes_.starts,
            Log{copy + "|\"" + copy + "\" -t -v 3.5.0.1 -w http://x/ -e \"Tamrin\"|" +
                tmw::SplitFileName(copy).Folder});
  EXPECT_TRUE(processes_.last_start.continues_chain);
  EXPECT_EQ(tmw::ReadFileBytes(copy) + tmw::ReadFileBytes(Temp(companion_)), "programlibrary");
  product_version_.version.reset();
  processes_.own_arguments.clear();
  ASSERT_TRUE(Restarts());
  EXPECT_EQ(processes_.last_start.command_line, "\"" + copy + "\" -t");
}

TEST_F(SelfUpdateTest, ARunThatLacksRightsIsHandedToTheInstalledUpdaterIfTheUserConsents) {
  ScriptedFileProbe probe(*ports_->file_probe);
  ports_->file_probe = &probe;
  Publish();
  program_ = "TmWebUpdate" + processes_.ProgramEnding();
  const std::string installed = Path(tmw::NativePath("Продукт/tm/" + program_));
  const std::string start = "elevated " + installed + "|-a " + processes_.own_arguments + "|" +
                            tmw::SplitFileName(installed).Folder;
  const struct {
    const char* name;
    bool is_installed, can_gain_rights, is_elevated, is_declined;
    Log starts;
  } cases[] = {{"consent", true, true, false, false, {start}},
               {"declined", true, true, false, true, {start}},
               {"rights already, or nobody to ask", true, false, false, false, {}},
               {"elevated", true, true, true, false, {}},
               {"no installed updater", false, true, false, false, {}}};
  const std::string place =
      tmw::JoinPath(ports_->files->TemporaryFolderOfSystem().value, "TMW_WebUpdate");
  std::filesystem::create_directories(ToPath(place));
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    for (const std::string& name : {program_, companion_}) {
      const std::string file = sandbox_.Write("Продукт/tm/" + name, "installed");
      if (!c.is_installed) std::filesystem::remove(ToPath(file));
    }
    tmw::UpdaterSettings settings = tmw::GetUpdaterSettings();
    settings.IsElevated = c.is_elevated;
    tmw::SetUpdaterSettings(settings);
    processes_.own_program = c.is_elevated ? tmw::JoinPath(place, program_) : installed;
    processes_.can_gain_rights = c.can_gain_rights;
    processes_.refusals.reset();
    if (c.is_declined) processes_.refusals = {{0, 1223}};
    processes_.starts.clear();
    probe.may_register = ports::Status::Success();
    probe.findings[Path("Продукт/help.txt")] = {{ports::Hindrance::kForbidden, 5}};
    EXPECT_EQ(Restarts(), std::string_view(c.name) == "consent");
    EXPECT_EQ(processes_.starts, c.starts);
    EXPECT_EQ(front_end_.log.back().starts_with(kError + "Невозможно заменить"), !has_exited_);
  }
  tmw::DeleteFolderTree(place);
}

TEST_F(SelfUpdateTest, AnElevatedRunWorksInAFolderOfTheSystemMadeAnew) {
  SetMode(true, true);
  tmw::UpdaterSettings settings = tmw::GetUpdaterSettings();
  settings.IsElevated = true;
  tmw::SetUpdaterSettings(settings);
  processes_.own_arguments = "-a -t";
  for (const std::string& name : {program_, companion_})
    sandbox_.Write("Продукт/tm/" + name, "installed");
  const auto folder = ports_->files->TemporaryFolderOfSystem();
  const std::string place = tmw::JoinPath(folder.value, "TMW_WebUpdate");
  std::filesystem::create_directories(ToPath(place + "/version.dll"));
  ASSERT_TRUE(Restarts());
  const std::string copy = tmw::JoinPath(place, program_);
  EXPECT_EQ(processes_.starts, Log{copy + "|\"" + copy + "\" -t -a -t|" + place});
  EXPECT_EQ(tmw::CollectFileNamesInFolder(place, "*").size(), 2U);
  EXPECT_FALSE(tmw::IsFolderExists(tmw::JoinPath(place, "version.dll")));
  tmw::DeleteFolderTree(place);
}

TEST(ProductVersion, StandsInTheClassSectionOfTheMachineSettings) {
  const Sandbox sandbox;
  const ScopedVariable machine(
      "TAMRIN_MACHINE_REG",
      sandbox.Write("m.reg",
                    "REGEDIT4\n[HKEY_LOCAL_MACHINE\\Tm_Version.VersionInfo]\n\"VersionEx\"=\"1\"\n"
                    "[HKEY_CLASSES_ROOT\\Tm_Version.VersionInfo]\n\"VersionEx\"=\"3.5.0.9\"\n"));
  const auto version = platform::MakeProductVersion()->InstalledVersion();
  // The product's component is on none of the test machines.
  EXPECT_EQ(version.value_or("none"), kOnWindows ? "none" : "3.5.0.9");
}

TEST_F(SelfUpdateTest, ANewerUpdaterIsFetchedAndStarted) {
  PublishUpdater("Next.EXE");
  sandbox_.Write("tmp/TMW_WebUpdate/Next.EXE", "an earlier one");
  sandbox_.Write("tmp/TMW_WebUpdate/extra.dll", "old");
  ASSERT_TRUE(Restarts());
  const std::string program = Temp("Next.EXE");
  EXPECT_EQ(processes_.starts,
            Log{program + "|\"" + program + "\" -r -w http://x/ -e \"Tamrin\"|"});
  EXPECT_EQ(sandbox_.Read("tmp/TMW_WebUpdate/extra.dll"), "extra");
}

TEST_F(SelfUpdateTest, ANameThatIsHeldGetsTheNextNumber) {
  FaultyFileSystem files(*ports::CurrentPorts().files);
  ports_->files = &files;
  files.held = {Temp("next.exe"), Temp("next_1.exe")};
  PublishUpdater("next.exe");
  for (const char* const name : {"next.exe", "next_1.exe"})
    sandbox_.Write(std::string("tmp/TMW_WebUpdate/") + name, "runs");
  ASSERT_TRUE(Restarts());
  const std::string program = Temp("next_2.exe");
  EXPECT_TRUE(processes_.starts.at(0).starts_with(program + "|\"" + program + "\" -r "));
  EXPECT_EQ(sandbox_.Read("tmp/TMW_WebUpdate/next_1.exe"), "runs");
  for (int number = 2; number <= 100; ++number) {
    const std::string name = "next_" + std::to_string(number) + ".exe";
    files.held.push_back(Temp(name));
    sandbox_.Write("tmp/TMW_WebUpdate/" + name, "runs");
  }
  EXPECT_FALSE(Restarts());
  EXPECT_EQ(front_end_.log,
            Log{kError +
                "Невозможно отыскать уникальное имя файла для загружаемого модуля "
                "\"next.exe\" . Возможно, текущему пользователю не хватает прав для работы "
                "во временной папке \"" +
                Path(tmw::NativePath("tmp/TMW_WebUpdate")) + "\"."});
}

TEST_F(SelfUpdateTest, ARestartedUpdaterDoesNotTryAgain) {
  PublishUpdater("next");
  tmw::UpdaterSettings settings = tmw::GetUpdaterSettings();
  settings.IsRestartedAfterSelfUpdate = true;
  tmw::SetUpdaterSettings(settings);
  EXPECT_FALSE(Restarts());
  EXPECT_EQ(front_end_.log,
            Log{kError + "Для обновления этой версии требуется загрузить новую программу "
                         "обновления. Попытка сделать это автоматически не удалась. Обновление "
                         "программы придется производить вручную."});
  EXPECT_EQ(listener_.log.back(), "mode 2");
}

TEST_F(SelfUpdateTest, AnUpdaterThatFailsItsCheckIsNotStarted) {
  const std::string url = server_.Url("/TMW_3.6.0.2/next.exe");
  PublishUpdater("next.exe");
  sandbox_.Write("server/TMW_3.6.0.2/next.exe", "new updatez");
  EXPECT_FALSE(Restarts());
  EXPECT_EQ(front_end_.log, Log{kError + "Контрольная сумма загруженного файла \"" + url +
                                "\" не совпадает с ожидаемой."});
  sandbox_.Write("server/TMW_3.6.0.2/next.exe", "new updater, longer");
  EXPECT_FALSE(Restarts());
  EXPECT_EQ(front_end_.log, Log{kError + "Длина загруженного файла \"" + url +
                                "\" не совпадает с ожидаемой (длина 19, ожидается 11)."});
  FaultyFileSystem files(*ports_->files);
  ports_->files = &files;
  PublishUpdater("next.exe");
  files.executable_code = FaultyFileSystem::kBroken;
  EXPECT_FALSE(Restarts());
  EXPECT_TRUE(front_end_.log.back().starts_with("error|Ошибка подготовки программы \"" +
                                                Temp("next.exe") + "\":\r\n"));
  files.hidden = Temp("next.exe");
  EXPECT_FALSE(Restarts());
  EXPECT_EQ(front_end_.log,
            Log{kError + "Ошибка загрузки файла \"" + url + "\". Файл не был загружен."});
  release_.updater_components.clear();
  Publish();
  EXPECT_FALSE(Restarts());
  EXPECT_EQ(front_end_.log, Log{kError + "Список компонент программы обновления пуст."});
  EXPECT_TRUE(processes_.starts.empty());
}

}  // namespace
}  // namespace tests
