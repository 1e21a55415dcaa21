#include "ui/downloading_form.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "foundation/error_environment.h"
#include "foundation/error_handling.h"
#include "services/product_settings.h"
#include "services/run_outcome.h"
#include "services/updater_settings.h"
#include "tests/fakes/hand_clock.h"
#include "tests/fakes/memory_settings.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"
#include "ui/error_form.h"

namespace tmw {
namespace {

using Log = std::vector<std::string>;
constexpr std::int32_t kMega = 1 << 20;

class Form : public testing::Test {
 protected:
  Form() {
    ports_->clock = &clock_;
    ports_->front_end = &front_end_;
    ports_->settings = &settings_;
    SetUpdaterSettings({});
    ForgetProductPaths();
  }

  // Runs the script in the place of a run. Returns what its window has displayed.
  Log Show(const std::function<void(DownloadingForm&)>& script) {
    DownloadingForm form([] {});
    front_end_.windows.on_run = [&](ports::ProgressViewEvents&) {
      front_end_.windows.log.clear();
      script(form);
    };
    form.Execute("TMW", "http://h/", "");
    return front_end_.windows.log;
  }

  static bool IsCancelled(DownloadingForm& form) {
    bool cancel = false;
    form.OnCheckCancelPressed(cancel);
    return cancel;
  }

  tests::ScopedPorts ports_;
  tests::HandClock clock_;
  tests::ScriptedFrontEnd front_end_;
  tests::MemorySettings settings_;
};

TEST_F(Form, WhatTheRunReportsIsShownAtOnce) {
  EXPECT_EQ(Show([&](DownloadingForm& form) {
              form.OnSetMainAction("Загрузка");
              form.OnSetSubAction("файл");
              form.OnSetIcon("scan");
              form.OnSetIcon("");
              for (const std::int32_t mode : {0, 1, 2, 3, -1})
                form.OnSetButtonMode(mode);
              form.OnSetProgress(5);  // no range: nothing to show
              form.OnSetupProgress(1234567, true);
              clock_.now = 40;
              form.OnSetProgress(0);
              clock_.now = 80;
              form.OnSetProgress(2000000000);
              clock_.now = 120;
              form.OnSetProgress(-1234);
              form.OnSetupProgress(0, true);
              form.OnSetupProgress(3, false);
              form.OnSetupProgress(0, false);
              form.OnSetStep(2, 6);
              form.OnSetComponent("файл");
              form.OnSetComponent("файл");
            }),
            (Log{"stage Загрузка",
                 "detail файл",
                 "picture scan",
                 "picture ",
                 "button Отмена disabled",
                 "button Отмена",
                 "button Закрыть",
                 "progress 0.00 0/1 234 567",
                 "bar 2",
                 "notes ||байт",
                 "progress 0.00 /1 234 567",
                 "progress 100. 1 234 567/1 234 567",
                 "progress 0.00 -1 234/1 234 567",
                 "progress 0.00 0/",
                 "bar 3",
                 "progress 0.00 ",
                 "bar 1",
                 "notes ||",
                 "bar 0",
                 "notes этап 2 из 6||",
                 "notes этап 2 из 6|файл|"}));
}

TEST_F(Form, BarAndCounterArePaintedAsOftenAsAPersonCanSeeAndEndExact) {
  const Log log = Show([&](DownloadingForm& form) {
    form.OnSetupProgress(2000, true);
    for (std::int32_t i = 1; i <= 1000; ++i, ++clock_.now)
      form.OnSetProgress(i);
    clock_.now += 33;
    EXPECT_FALSE(IsCancelled(form));
    EXPECT_EQ(front_end_.windows.log.back(), "progress 50.0 1 000/2 000") << "by a later check";
    form.OnSetProgress(1500);
    EXPECT_EQ(front_end_.windows.log.back(), "progress 50.0 1 000/2 000");
    form.OnSetMainAction("Дальше");
    form.OnSetProgress(2000);
    form.OnSetupProgress(0, false);
  });
  EXPECT_LE(log.size(), 3U + 31 + 5);
  EXPECT_GE(log.size(), 3U + 28 + 5);
  EXPECT_EQ(Log(log.end() - 5, log.end()), (Log{"progress 75.0 1 500/2 000", "stage Дальше",
                                                "progress 100. 2 000/2 000", "bar 0", "notes ||"}));
}

TEST_F(Form, SpeedAndTimeLeftStayCalm) {
  // Bytes in all, bytes a check, milliseconds between checks; the words after 20 seconds.
  const std::tuple<std::int32_t, std::int32_t, std::int64_t, const char*> cases[] = {
      {2000 * kMega, 60 * 1024, 100, "pace 600 КБ/с, осталось 57 мин"},
      {2047 * kMega, 16 * 1024, 100, "pace 160 КБ/с, осталось 3 ч 39 мин"},
      {2047 * kMega, 100, 100, "pace 1,0 КБ/с"},
      {38 * kMega, 62 * 1024, 50, "pace 1,2 МБ/с, осталось 12 с"},
      {2000 * kMega, 50 * kMega, 1000, ""},  // of an earlier run
  };
  for (const auto& [total, per_check, period, words] : cases) {
    const Log log = Show([&, n = total, step = per_check, wait = period](DownloadingForm& form) {
      form.OnSetupProgress(n, true);
      for (std::int32_t i = 1; i * wait <= 20000; ++i) {
        clock_.now += wait;
        form.OnSetProgress(i * step);
      }
    });
    const auto is_pace = [](const std::string& line) { return line.starts_with("pace "); };
    const auto pace = std::find_if(log.rbegin(), log.rend(), is_pace);
    EXPECT_EQ(pace == log.rend() ? "" : *pace, words);
  }
  // A speed that swings does not swing the words; silence takes them away.
  const Log log = Show([&](DownloadingForm& form) {
    form.OnSetupProgress(200 * kMega, true);
    for (std::int32_t i = 1, at = 0; i <= 600; ++i, clock_.now += 100)
      form.OnSetProgress(at += (i % 20 < 10 ? 10 : 90) * 512);
    for (int i = 0; i < 70; ++i, clock_.now += 100)
      IsCancelled(form);
  });
  EXPECT_EQ(log.back(), "pace ");
  std::set<std::string> times_left;
  for (const std::string& line : log)
    if (line.starts_with("pace 2")) times_left.insert(line.substr(line.find(',')));
  EXPECT_LE(times_left.size(), 5U) << testing::PrintToString(times_left);
}

TEST_F(Form, APressAsksAndInsistingDoesNot) {
  using Events = ports::ProgressViewEvents;
  const auto cancel = &Events::OnCancel;
  const auto stop = &Events::OnStop;
  // Mode, press, answer; whether a question is asked, whether the run is cancelled.
  const std::tuple<std::int32_t, void (Events::*)(), bool, bool, bool> cases[] = {
      {1, cancel, true, true, true},   {1, cancel, false, true, false},
      {0, cancel, true, false, false}, {2, cancel, true, true, true},
      {1, stop, false, false, true},   {0, stop, true, false, false},
  };
  const Log question = {"question|Обновление программы|Прекратить загрузку и обновление?"};
  for (const auto& [mode, press, answer, is_asked, is_cancelled] : cases) {
    front_end_.log.clear();
    front_end_.answers = {answer};
    SetRunOutcome(RunOutcome::kFailed);
    DownloadingForm form([] {});
    front_end_.windows.on_run = [&, m = mode, p = press](Events& events) {
      form.OnSetButtonMode(m);
      front_end_.on_events = [&] { (events.*p)(); };
      IsCancelled(form);
      front_end_.on_events = nullptr;
    };
    form.Execute("", "", "");
    EXPECT_EQ(IsCancelled(form), is_cancelled) << "for the rest of the run, mode " << mode;
    EXPECT_EQ(GetRunOutcome() == RunOutcome::kRefused, is_cancelled);
    EXPECT_EQ(front_end_.log, is_asked ? question : Log{}) << mode;
  }
}

TEST_F(Form, AFailedRunIsToldByItsKindAndClosesTheWindow) {
  UpdaterSettings settings;
  settings.IsTempCopy = settings.IsClientInstallation = true;
  SetUpdaterSettings(settings);
  auto saved = SetErrorEnvironment({[] { return std::make_unique<ErrorForm>(); }, nullptr});
  const tests::Sandbox sandbox;
  const std::string general = "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\";
  const Log opened = {"caption Web-обновление Tamrin (клиентский компьютер)", "button Закрыть"};
  DownloadingForm([] {}).Execute("TMW", "http://h/", "");  // a setting is missing
  EXPECT_EQ(front_end_.windows.log, (Log{opened[0], opened[1], "close"}));
  ASSERT_EQ(front_end_.log.size(), 1U);
  EXPECT_TRUE(front_end_.log[0].starts_with("warning|Ошибка загрузки|")) << front_end_.log[0];
  for (const char* const name : {"RootPath", "DataBasePath"})
    settings_.Set(ports::SettingsRoot::kMachine, general + name, sandbox.Path());
  ForgetProductPaths();
  front_end_.windows.log.clear();
  DownloadingForm([] {}).Execute("TMW", "http://h/", "");  // there is no database
  ASSERT_EQ(front_end_.windows.log.size(), 5U);
  const std::string shown = front_end_.windows.log[2];
  EXPECT_TRUE(shown.starts_with("error Ошибка|")) << shown;
  EXPECT_NE(shown.find("::DownloadingForm.theTimer_Timer]\r\n"), std::string::npos) << shown;
  EXPECT_EQ(front_end_.windows.log.back(), "close");
  SetErrorEnvironment(std::move(saved));
}

}  // namespace
}  // namespace tmw
