#include "startup/main_procedure.h"

#include <gtest/gtest.h>

#include "foundation/error_environment.h"
#include "foundation/error_handling.h"
#include "foundation/file_names.h"
#include "foundation/program_error.h"
#include "services/mutexes.h"
#include "services/product_settings.h"
#include "services/run_outcome.h"
#include "services/updater_settings.h"
#include "startup/default_urls.h"
#include "tests/fakes/fake_mutexes.h"
#include "tests/fakes/hand_clock.h"
#include "tests/fakes/memory_settings.h"
#include "tests/fakes/recording_processes.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

using ports::SettingsRoot;
using Log = std::vector<std::string>;

constexpr const char* kGeneral = "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\";
constexpr const char* kAutoUpdate = "SOFTWARE\\Kestrel Soft\\Tamrin\\AutoUpdate\\";

// A run whose end the test decides.
struct ScriptedRun {
  bool updated = false;
  bool fails = false;
  Log calls;
};

class ScriptedWindow final : public ProgressWindow {
 public:
  explicit ScriptedWindow(ScriptedRun& run) : run_(run) {}
  void Execute(const std::string& product, const std::string& url,
               const std::string& fallback) override {
    run_.calls.push_back(product + "|" + url + "|" + fallback);
    if (run_.fails) RaiseProgramError("Сбой");
  }
  bool Updated() const override { return run_.updated; }
  std::string NewVersion() const override { return "3.1.0.7"; }

 private:
  ScriptedRun& run_;
};

// The error window, which notes what it would show.
class NotingWindow final : public ErrorWindow {
 public:
  explicit NotingWindow(Log& log) : log_(log) {}
  void Execute(const std::string& message, const std::string& chain, std::int32_t code,
               const std::string& /*caption*/) override {
    log_.push_back(message + "|" + std::to_string(code) + "|" + chain);
  }

 private:
  Log& log_;
};

class StartUp : public testing::Test {
 protected:
  StartUp() {
    ports_->clock = &clock_;
    ports_->front_end = &front_end_;
    ports_->mutexes = &mutexes_;
    ports_->processes = &processes_;
    ports_->settings = &settings_;
    settings_.Set(SettingsRoot::kMachine, kGeneral + std::string("RootPath"), sandbox_.Path());
    product_ = sandbox_.Write("Продукт/Tamrin.exe", "program");
  }
  // A run that ends in an error keeps the lock until its process ends.
  ~StartUp() override { ReleaseUpdaterLock(); }

  bool Parse(const std::string& arguments) {
    processes_.own_arguments = arguments;
    return ParseCmdLine();
  }

  void Run(const std::string& arguments) {
    processes_.own_arguments = arguments;
    Main([this] { return std::make_unique<ScriptedWindow>(run_); });
    EXPECT_EQ(processes_.waits, 0);
  }

  tests::Sandbox sandbox_;
  tests::ScopedPorts ports_;
  tests::HandClock clock_;
  tests::ScriptedFrontEnd front_end_;
  tests::FakeMutexes mutexes_;
  tests::RecordingProcesses processes_;
  tests::MemorySettings settings_;
  ScriptedRun run_;
  std::string product_;
};

TEST_F(StartUp, ARollbackUnderWayIsFinishedBeforeAnythingElse) {
  tests::Sandbox product;
  settings_.Set(SettingsRoot::kMachine, kGeneral + std::string("RootPath"), product.Path());
  ForgetProductPaths();
  product.Write("TMW_Rollback.txt", "");
  Run("");
  ASSERT_EQ(front_end_.log.size(), 1U);
  EXPECT_TRUE(front_end_.log[0].ends_with("TmRollback.exe\", которая его завершает, не найдена."));
  processes_.own_program = product.Path("own/TmWebUpdate");
  processes_.on_start = [&] { EXPECT_TRUE(mutexes_.log.back().starts_with("close ")); };
  for (const std::string place : {"own/TmRollback.exe", "tm/TmRollback.exe"}) {
    product.Write(place, "");
    for (const bool finishes : {false, true}) {
      front_end_.answers = {finishes};
      processes_.starts.clear();
      Run("");
      EXPECT_TRUE(front_end_.log.back().ends_with("\r\n\r\nЗавершить возврат?"));
      EXPECT_EQ(GetRunOutcome(), finishes ? RunOutcome::kDone : RunOutcome::kRefused);
      EXPECT_EQ(processes_.starts.size(), finishes ? 1U : 0U);
    }
    EXPECT_NE(processes_.starts[0].find(NativePath(place) + "\" --finish|"), std::string::npos);
    EXPECT_TRUE(processes_.last_start.continues_chain);
  }
  EXPECT_EQ(run_.calls, Log());
  ForgetProductPaths();
}

TEST_F(StartUp, WithoutSettingsAndOptionsWithAValueEverythingHasItsDefault) {
  for (const char* const option : {"", "-w", "-v", "-e", "-p"}) {
    ASSERT_TRUE(Parse(option)) << option;
    const UpdaterSettings& s = GetUpdaterSettings();
    EXPECT_EQ(s.Url, kPrimaryUrl);
    EXPECT_TRUE(s.IsDefaultUrl);
    EXPECT_FALSE(s.NoFinalMessage || s.IsRestartedAfterSelfUpdate || s.UseNormalExit ||
                 s.IsTempCopy || s.NoFtp || s.IsClientInstallation || s.IsNetworkInstallation);
    EXPECT_EQ(s.OldProductVersion + s.MainExeFile + s.MainExeParams + s.ProxyServer, "");
    EXPECT_EQ(s.ProxyType, 0);
  }
}

TEST_F(StartUp, OptionsIgnoreCaseAndTheirValuesKeepIt) {
  ASSERT_TRUE(Parse("-Y -r -D -t -W http://X/ -v 1.2.3.4 -V 2.0 -e \"C:\\A b\\Т.exe\" -p -y"));
  const UpdaterSettings& s = GetUpdaterSettings();
  EXPECT_TRUE(s.NoFinalMessage && s.IsRestartedAfterSelfUpdate && s.UseNormalExit && s.IsTempCopy);
  EXPECT_EQ(s.Url, "http://X/");
  EXPECT_FALSE(s.IsDefaultUrl);
  EXPECT_EQ(s.OldProductVersion, "2.0");  // the later one holds
  EXPECT_EQ(s.MainExeFile, "C:\\A b\\Т.exe");
  EXPECT_EQ(s.MainExeParams, "-y");  // a value, though it looks like an option
}

TEST_F(StartUp, AnUnknownOptionIsNamedAndEndsTheStart) {
  Run("-y -Zorro -e \"" + product_ + "\"");
  EXPECT_EQ(front_end_.log,
            Log{"warning|Программа обновления|Ошибка параметров командной строки:\r\n"
                "Неизвестный параметр \"-Zorro\"."});
  EXPECT_EQ(processes_.starts, Log{});
  EXPECT_EQ(mutexes_.log, Log{});
  EXPECT_EQ(GetRunOutcome(), RunOutcome::kBadCommandLine);
}

TEST_F(StartUp, SettingsOfTheProduct) {
  const auto user = [&](const char* name, auto value) {
    settings_.Set(SettingsRoot::kUser, kAutoUpdate + std::string(name), value);
  };
  settings_.Set(SettingsRoot::kMachine, kGeneral + std::string("InstallationType"),
                std::string("CLIENT"));
  user("ProxyServer", std::string("proxy:3128"));
  user("ProxyType", 2);
  user("CustomUrl", std::string("http://custom/"));
  user("NoFtp", std::string("Yes"));
  ASSERT_TRUE(Parse(""));
  EXPECT_TRUE(GetUpdaterSettings().IsClientInstallation);
  EXPECT_TRUE(GetUpdaterSettings().NoFtp);
  EXPECT_EQ(GetUpdaterSettings().ProxyServer, "");  // read with type 3 only
  EXPECT_EQ(GetUpdaterSettings().Url, kPrimaryUrl);

  user("ProxyType", 3);
  user("IsCustomUrl", std::string("true"));
  ASSERT_TRUE(Parse(""));
  EXPECT_EQ(GetUpdaterSettings().ProxyServer, "proxy:3128");
  EXPECT_EQ(GetUpdaterSettings().Url, "http://custom/");
  EXPECT_FALSE(GetUpdaterSettings().IsDefaultUrl);

  user("CustomUrl", std::string());
  user("ProxyType", 5);
  ASSERT_TRUE(Parse(""));
  EXPECT_EQ(GetUpdaterSettings().Url, kPrimaryUrl);
  EXPECT_TRUE(GetUpdaterSettings().IsDefaultUrl);
  EXPECT_EQ(GetUpdaterSettings().ProxyType, 0);
}

TEST_F(StartUp, ANetworkInstallationIsRefusedAndTheProductStartedAgain) {
  sandbox_.Write("tm/CLIENT-7.cln", "");
  Run("-e \"" + product_ + "\" -p \"-open база\"");
  EXPECT_EQ(front_end_.log,
            Log{"information|Web-обновление|Программа \"Tamrin\" установлена в режиме, когда "
                "программные компоненты располагаются на сетевом диске и используются "
                "несколькими пользовательскими компьютерами. \r\n\r\n"
                "Утилиту Web-обновления в этом случае использовать нельзя."});
  EXPECT_EQ(run_.calls, Log{});
  EXPECT_EQ(mutexes_.log, Log{});
  EXPECT_EQ(processes_.starts.size(), 1U);
  EXPECT_EQ(GetRunOutcome(), RunOutcome::kRefused);
}

TEST_F(StartUp, ARunWaitsLocksUpdatesTellsReleasesAndStartsTheProduct) {
  run_.updated = true;
  const std::string without_ending = product_.substr(0, product_.size() - 4);
  Log at_start;
  processes_.on_start = [&] { at_start = mutexes_.log; };
  Run("-e \"" + without_ending + "\" -p \"/a\"");
  EXPECT_EQ(run_.calls, Log{std::string("TMW|") + kPrimaryUrl + "|" + kFallbackUrl});
  EXPECT_EQ(front_end_.log,
            Log{"information|Программа обновления|Программа \"Tamrin\" обновлена до версии "
                "3.1.0.7."});
  EXPECT_EQ(
      mutexes_.log,
      (Log{"probe Local\\Tamrin_Mutex", "close Local\\Tamrin_Mutex", "probe Local\\Fsk_Mutex",
           "close Local\\Fsk_Mutex", "probe Local\\DocLens_Mutex", "close Local\\DocLens_Mutex",
           "own Local\\TMW_WebUpdate_Mutex", "close Local\\TMW_WebUpdate_Mutex"}));
  EXPECT_EQ(at_start, mutexes_.log) << "the lock is free by then";
  ASSERT_EQ(processes_.starts.size(), 1U);
  const std::string start = processes_.starts.front();
  EXPECT_EQ(start.substr(0, start.find('|')), product_);
  EXPECT_NE(start.find("|\"" + product_ + "\" /a|"), std::string::npos) << start;
  EXPECT_FALSE(processes_.last_start.continues_chain);
  EXPECT_EQ(GetRunOutcome(), RunOutcome::kDone);
}

TEST_F(StartUp, TheFinalMessageNeedsAnUpdateAndAnAttendedRun) {
  run_.updated = true;
  Run("-y -w http://h/");
  EXPECT_EQ(run_.calls, Log{"TMW|http://h/|"});  // no fallback behind an address of one's own
  run_.updated = false;
  Run("");
  EXPECT_EQ(front_end_.log, Log{});
}

TEST_F(StartUp, GivingUpOnARunningApplicationEndsEverything) {
  for (const auto& [mutex, words] :
       {std::pair("Local\\Fsk_Mutex", "закрыть приложение \"Tamrin: Fsk\"."),
        {"Local\\TMW_WebUpdate_Mutex", "несколько"}}) {
    mutexes_.held_by_others = {mutex};
    front_end_.log.clear();
    Run("-e \"" + product_ + "\"");
    ASSERT_EQ(front_end_.log.size(), 1U);
    EXPECT_NE(front_end_.log.front().find(words), std::string::npos) << front_end_.log[0];
    EXPECT_EQ(run_.calls, Log{});
    EXPECT_EQ(processes_.starts, Log{});
    EXPECT_EQ(GetRunOutcome(), RunOutcome::kRefused);
  }
}

TEST_F(StartUp, AnErrorOfTheStartIsShownAndIsAFailure) {
  for (const bool is_updated : {false, true}) {
    run_ = {is_updated, !is_updated, {}};
    processes_.refusals = {2, 2};  // the product cannot be started again
    auto saved = SetErrorEnvironment(
        {[this] { return std::make_unique<NotingWindow>(run_.calls); }, nullptr});
    Run("-y -e \"" + product_ + "\"");
    SetErrorEnvironment(std::move(saved));
    ASSERT_EQ(run_.calls.size(), 2U);
    const std::string& shown = run_.calls[1];
    EXPECT_EQ(shown.starts_with("Сбой|1001|["), !is_updated) << shown;
    EXPECT_EQ(shown.find("::miMain.RunMainExeFile]") != std::string::npos, is_updated) << shown;
    EXPECT_NE(shown.find("::miMain.Main]"), std::string::npos) << shown;
    EXPECT_EQ(GetRunOutcome(), RunOutcome::kFailed);
    ReleaseUpdaterLock();
  }
}

TEST_F(StartUp, AFolderThatIsMissingIsNotLockedAndAMissingProductSkippedWithoutAWord) {
  settings_.Set(SettingsRoot::kMachine, kGeneral + std::string("RootPath"), sandbox_.Path("нет"));
  Run("-e \"" + product_ + "-нет\"");
  EXPECT_EQ(run_.calls.size(), 1U);
  EXPECT_EQ(processes_.starts, Log{});
  EXPECT_EQ(front_end_.log, Log{});
  EXPECT_EQ(GetRunOutcome(), RunOutcome::kFailed) << "unless the run says otherwise";
}

TEST_F(StartUp, EndingTheUpdaterFreesTheLockFirst) {
  ASSERT_TRUE(Parse(""));
  ASSERT_TRUE(LockUpdaterMutex("Local\\TMW_WebUpdate_Mutex"));
  mutexes_.log.clear();
  // The fake ends the process by an exception, which passes through the frames.
  EXPECT_THROW(ExitUpdater(), ProgramError);
  EXPECT_EQ(mutexes_.log, Log{"close Local\\TMW_WebUpdate_Mutex"});
  EXPECT_EQ(processes_.ended_with, 0);
}

#ifndef _WIN32  // where a test can fork
TEST_F(StartUp, TheNormalEndIsANormalOneIfAsked) {
  ASSERT_TRUE(Parse("-d"));
  EXPECT_EXIT(ExitUpdater(), testing::ExitedWithCode(0), "");
}
#endif

}  // namespace
}  // namespace tmw
