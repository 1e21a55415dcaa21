#include "ui/downloading_form.h"

#include <gtest/gtest.h>

#include "foundation/error_handling.h"
#include "startup/services/product_settings.h"
#include "startup/services/updater_settings.h"
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

  // The script stands in the place of a run; gives what its window was told.
  Log Show(const std::function<void(DownloadingForm&)>& script) {
    DownloadingForm form([] {});
    front_end_.windows.on_run = [&](platform::ProgressViewEvents&) {
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

TEST_F(Form, WhatTheRunTellsIsShownAtOnce) {
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
              form.OnSetupProgress(3, false);
              form.OnSetupProgress(0, false);
            }),
            (Log{"stage Загрузка", "detail файл", "picture scan", "picture ",
                 "button Отмена disabled", "button Отмена", "button Закрыть",
                 "progress 0.00 0/1 234 567", "bar 2", "progress 0.00 /1 234 567",
                 "progress 100. 1 234 567/1 234 567", "progress 0.00 ", "bar 1", "bar 0"}));
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
  EXPECT_LE(log.size(), 2U + 31 + 4);
  EXPECT_GE(log.size(), 2U + 28 + 4);
  EXPECT_EQ(Log(log.end() - 4, log.end()), (Log{"progress 75.0 1 500/2 000", "stage Дальше",
                                                "progress 100. 2 000/2 000", "bar 0"}));
}

TEST_F(Form, SpeedAndTimeLeftStayCalm) {
  const struct {
    const char* what;
    std::int32_t total;
    std::int32_t per_check;
    std::int64_t check_period;
    const char* words;  // after 20 seconds
  } cases[] = {
      {"an hour", 2000 * kMega, 60 * 1024, 100, "600 КБ/с, осталось 57 мин"},
      {"hours", 2047 * kMega, 16 * 1024, 100, "160 КБ/с, осталось 3 ч 39 мин"},
      {"far too long", 2047 * kMega, 100, 100, "1,0 КБ/с"},
      {"seconds", 38 * kMega, 62 * 1024, 50, "1,2 МБ/с, осталось 15 с"},
      {"bytes of an earlier run", 2000 * kMega, 50 * kMega, 1000, ""},
  };
  for (const auto& c : cases) {
    const Log log = Show([&](DownloadingForm& form) {
      form.OnSetupProgress(c.total, true);
      std::int32_t position = 0;
      for (std::int64_t t = 0; t < 20000; t += c.check_period) {
        clock_.now += c.check_period;
        form.OnSetProgress(position += c.per_check);
      }
    });
    const auto pace = std::find_if(
        log.rbegin(), log.rend(), [](const std::string& line) { return line.starts_with("pace"); });
    EXPECT_EQ(pace == log.rend() ? "" : pace->substr(5), c.words) << c.what;
  }
  // A speed that swings does not swing the words; silence and a new range take them away.
  Log words;
  Show([&](DownloadingForm& form) {
    form.OnSetupProgress(200 * kMega, true);
    for (std::int32_t i = 1, at = 0; i <= 600; ++i, clock_.now += 100)
      form.OnSetProgress(at += (i % 20 < 10 ? 10 : 90) * 512);
    words = front_end_.windows.log;
    for (int i = 0; i < 70; ++i, clock_.now += 100)
      IsCancelled(form);
    EXPECT_EQ(front_end_.windows.log.back(), "pace ");
  });
  std::erase_if(words, [](const std::string& line) { return !line.starts_with("pace "); });
  int time_left_changes = 0;
  for (std::size_t i = 1; i < words.size(); ++i)
    time_left_changes +=
        words[i].substr(words[i].find(',')) != words[i - 1].substr(words[i - 1].find(','));
  EXPECT_LE(time_left_changes, 8);
}

TEST_F(Form, APressAsksAndInsistingDoesNot) {
  const auto cancel = &platform::ProgressViewEvents::OnCancel;
  const auto stop = &platform::ProgressViewEvents::OnStop;
  const struct {
    std::int32_t mode;
    void (platform::ProgressViewEvents::*press)();
    bool answer;
    std::size_t questions;
    bool is_cancelled;
  } cases[] = {
      {1, cancel, true, 1, true}, {1, cancel, false, 1, false}, {0, cancel, true, 0, false},
      {2, cancel, true, 1, true}, {1, stop, false, 0, true},    {0, stop, true, 0, false},
  };
  for (const auto& c : cases) {
    front_end_.log.clear();
    front_end_.answers = {c.answer};
    Show([&](DownloadingForm& form) {
      form.OnSetButtonMode(c.mode);
      front_end_.on_events = [&] { (front_end_.windows.open->*c.press)(); };
      EXPECT_EQ(IsCancelled(form), c.is_cancelled) << c.mode;
      front_end_.on_events = nullptr;
      EXPECT_EQ(IsCancelled(form), c.is_cancelled) << "for the rest of the run";
    });
    const Log question = {"question|Обновление программы|Прекратить загрузку и обновление?"};
    EXPECT_EQ(front_end_.log, c.questions == 0 ? Log{} : question);
  }
}

TEST_F(Form, AFailedRunIsToldByItsKindAndClosesTheWindow) {
  UpdaterSettings settings;
  settings.IsTempCopy = settings.IsClientInstallation = true;
  SetUpdaterSettings(settings);
  ErrorEnvironment saved =
      SetErrorEnvironment({[] { return std::make_unique<ErrorForm>(); }, nullptr});
  const tests::Sandbox sandbox;
  const std::string general = "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\";
  const auto run = [&] {
    DownloadingForm form([] {});
    front_end_.windows.log.clear();
    form.Execute("TMW", "http://h/", "");
    EXPECT_FALSE(form.Updated());
    return front_end_.windows.log;
  };
  const Log opened = {"caption Web-обновление Tamrin (клиентский компьютер)", "button Закрыть"};
  settings_.Set(platform::SettingsRoot::kMachine, general + "DataBasePath", sandbox.Path("none"));
  EXPECT_EQ(run(), (Log{opened[0], opened[1], "close"}));
  ASSERT_EQ(front_end_.log.size(), 1U);
  EXPECT_TRUE(front_end_.log[0].starts_with("warning|Ошибка загрузки|")) << front_end_.log[0];

  settings_.Set(platform::SettingsRoot::kMachine, general + "RootPath", sandbox.Path());
  ForgetProductPaths();
  const Log log = run();
  ASSERT_EQ(log.size(), 5U);
  EXPECT_TRUE(log[2].starts_with("error Ошибка|")) << log[2];
  EXPECT_NE(log[2].find("::DownloadingForm.theTimer_Timer]\r\n"), std::string::npos) << log[2];
  EXPECT_EQ(log.back(), "close");
  SetErrorEnvironment(std::move(saved));
}

TEST(FineNumStr, GroupsDigitsByThreeAndHasNoZero) {
  const std::pair<double, const char*> cases[] = {
      {0, ""}, {0.4, ""}, {7, "7"}, {999.5, "1 000"}, {123456, "123 456"}, {1234567, "1 234 567"},
  };
  for (const auto& [value, words] : cases)
    EXPECT_EQ(DownloadingForm::FineNumStr(value), words);
}

}  // namespace
}  // namespace tmw
