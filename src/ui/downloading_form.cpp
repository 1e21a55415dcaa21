#include "ui/downloading_form.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "engine/ks_updater.h"
#include "foundation/error_handling.h"
#include "foundation/program_error.h"
#include "ports/clock.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "services/run_log.h"
#include "services/run_outcome.h"
#include "services/updater_settings.h"
#include "ui/ui_texts.h"

namespace tmw {
namespace {

constexpr const char* kModule = "DownloadingForm";

constexpr std::int64_t kPaintingPeriod = 33;  // milliseconds

std::int64_t Now() {
  return ports::CurrentPorts().clock->TickCount();
}

ports::BarKind KindOfBar(bool has_range, bool has_counter) {
  using ports::BarKind;
  if (has_range) return has_counter ? BarKind::kBarWithCounter : BarKind::kBar;
  return has_counter ? BarKind::kCounter : BarKind::kNone;
}

}  // namespace

DownloadingForm::DownloadingForm(std::function<void()> exit_updater)
    : exit_updater_(std::move(exit_updater)),
      view_(ports::CurrentPorts().front_end->MakeProgressView()) {}

DownloadingForm::~DownloadingForm() = default;

void DownloadingForm::Execute(const std::string& product_code, const std::string& url,
                              const std::string& fallback_url) try {
  product_code_ = product_code;
  url_ = url;
  fallback_url_ = fallback_url;
  const bool is_client = GetUpdaterSettings().IsClientInstallation;
  view_->SetCaption(std::string(ui_texts::kCaption) + (is_client ? ui_texts::kClientSuffix : ""));
  is_timer_on_ = true;
  OnSetButtonMode(2);
  view_->Run(*this);
} catch (...) {
  ReRaiseError(kModule, "Execute");
}

void DownloadingForm::theTimer_Timer() try {
  if (!std::exchange(is_timer_on_, false)) return;
  Run();
  ShowUnfinished();
  view_->Close();
} catch (...) {
  const ProgramError error = CurrentError();
  if (error.Number == kProgramErrorNumber) {
    std::string message;
    std::string frames;
    SplitErrorText(error.Description, message, frames);
    LogEvent("error", {{"number", error.Number}, {"text", message}, {"chain", error.Source}});
    DownloadError(message);
  } else {
    ReportError(kModule, "theTimer_Timer");
  }
  ShowUnfinished();
  view_->Close();
}

void DownloadingForm::Run() {
  updater_ = std::make_unique<KsUpdater>(*this, [this] {
    view_->Close();
    exit_updater_();
  });
  updater_->SetOldProductVersion(GetUpdaterSettings().OldProductVersion);
  bool updated = false;
  updater_->Execute(product_code_, url_, fallback_url_, updated);
  updated_ = updated;
  new_version_ = updater_->NewVersion();
  LogEvent("result",
           {{"updated", updated_}, {"version", new_version_}, {"cancelled", cancel_pressed_}});
}

void DownloadingForm::ShowUnfinished() {
  const std::string advice = updater_ == nullptr ? "" : updater_->AdviceOnUnfinished();
  if (!advice.empty()) ShowWarning(box_titles::kProductUpdate, advice);
}

void DownloadingForm::theCancel_Click() try {
  // A second press while the question stands asks nothing.
  if (!cancel_enabled_ || is_asking_) return;
  is_asking_ = true;
  const bool is_confirmed = AskQuestion(box_titles::kProductUpdate, ui_texts::kCancelQuestion);
  is_asking_ = false;
  if (is_confirmed) Cancel();
} catch (...) {
  is_asking_ = false;
  ReportError(kModule, "theCancel_Click");
}

void DownloadingForm::OnStop() {
  if (cancel_enabled_) Cancel();
}

void DownloadingForm::Cancel() {
  cancel_pressed_ = true;
  SetRunOutcome(RunOutcome::kRefused);
}

void DownloadingForm::OnSetMainAction(const std::string& text) try {
  PaintHeldProgress();
  if (!text.empty()) LogEvent("stage", {{"text", text}});
  view_->SetStage(text);
} catch (...) {
  ReRaiseError(kModule, "fUpdater_OnSetMainAction");
}

void DownloadingForm::OnSetSubAction(const std::string& text) try {
  view_->SetDetail(text);
} catch (...) {
  ReRaiseError(kModule, "fUpdater_OnSetSubAction");
}

void DownloadingForm::OnSetIcon(const std::string& name) try {
  view_->SetPicture(name);
} catch (...) {
  ReRaiseError(kModule, "fUpdater_OnSetIcon");
}

void DownloadingForm::OnSetStep(std::int32_t step, std::int32_t count) try {
  LogEvent("step", {{"number", step}, {"count", count}});
  PaintNotes({ui_texts::Step(step, count), "", notes_.unit});
} catch (...) {
  ReRaiseError(kModule, "fUpdater_OnSetStep");
}

void DownloadingForm::OnSetComponent(const std::string& name) try {
  PaintNotes({notes_.step, name, notes_.unit});
} catch (...) {
  ReRaiseError(kModule, "fUpdater_OnSetComponent");
}

void DownloadingForm::PaintNotes(ports::ProgressNotes notes) {
  if (notes == notes_) return;
  notes_ = std::move(notes);
  view_->SetNotes(notes_);
}

void DownloadingForm::OnSetupProgress(std::int32_t max, bool show_count) try {
  PaintHeldProgress();
  progress_max_ = max;
  progress_value_ = 0;
  show_count_ = show_count;
  max_words_ = show_count ? FineNumStr(max) : "";
  last_painting_ = Now();
  if (!pace_.Words().empty()) view_->SetPace("");
  pace_.Start(max, last_painting_);
  if (max != 0 || show_count) view_->SetProgress(0, show_count ? "0/" + max_words_ : "");
  view_->ShowBar(KindOfBar(max != 0, show_count));
  PaintNotes({notes_.step, notes_.component, show_count ? ui_texts::kBytes : ""});
} catch (...) {
  ReRaiseError(kModule, "fUpdater_OnSetupProgress");
}

void DownloadingForm::OnSetProgress(std::int32_t value) try {
  if (progress_max_ <= 0) return;
  progress_value_ = std::min(value, progress_max_);
  is_progress_held_ = true;
  PaintProgressIfDue();
} catch (...) {
  ReRaiseError(kModule, "fUpdater_OnSetProgress");
}

void DownloadingForm::PaintProgressIfDue() {
  const std::int64_t now = Now();
  if (show_count_ && progress_max_ > 0) {
    pace_.Advance(progress_value_);
    if (pace_.Update(now)) view_->SetPace(pace_.Words());
  }
  if (is_progress_held_ && now - last_painting_ >= kPaintingPeriod) PaintProgress(now);
}

void DownloadingForm::PaintHeldProgress() {
  if (is_progress_held_) PaintProgress(Now());
}

void DownloadingForm::PaintProgress(std::int64_t now) {
  is_progress_held_ = false;
  last_painting_ = now;
  const double percent = static_cast<double>(progress_value_) / progress_max_ * 100;
  // A run may report a position below 0.
  view_->SetProgress(std::max(percent, 0.0),
                     show_count_ ? FineNumStr(progress_value_) + "/" + max_words_ : "");
}

void DownloadingForm::OnSetButtonMode(std::int32_t mode) try {
  if (mode < 0 || mode > 2) return;
  cancel_enabled_ = mode != 0;
  view_->SetButton(mode == 2 ? ui_texts::kClose : ui_texts::kCancel, cancel_enabled_);
} catch (...) {
  ReRaiseError(kModule, "fUpdater_OnSetButtonMode");
}

void DownloadingForm::OnCheckCancelPressed(bool& cancel) try {
  ports::CurrentPorts().front_end->RunPendingEvents();
  PaintProgressIfDue();
  cancel = cancel_pressed_;
} catch (...) {
  ReRaiseError(kModule, "fUpdater_OnCheckCancelPressed");
}

std::string DownloadingForm::FineNumStr(double value) try {
  const long long number = std::llround(value);
  if (number == 0) return {};
  std::string text = std::to_string(number);
  const std::size_t first_digit = number < 0 ? 1 : 0;
  for (std::size_t end = text.size(); end > first_digit + 3; end -= 3)
    text.insert(end - 3, " ");
  return text;
} catch (...) {
  ReRaiseError(kModule, "FineNumStr");
}

}  // namespace tmw
