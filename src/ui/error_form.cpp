#include "ui/error_form.h"

#include "foundation/string_accumulator.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "ports/system_info.h"
#include "services/advice.h"
#include "services/box_titles.h"
#include "services/run_log.h"
#include "ui/ui_texts.h"

namespace tmw {
namespace {

constexpr std::string_view kSectionSeparator = "\x01";

// A line of dashes below the text so far.
std::string DashLine() {
  std::string line(kCrLf);
  for (int i = 0; i < 50; ++i)
    line += "—";
  return line.append(kCrLf);
}

// A system with a name of its own is not called Windows.
std::string SystemVersion() {
  const auto os = ports::CurrentPorts().system_info->Os();
  const bool has_name = os && !os->name.empty();
  return (has_name ? ui_texts::kSystemVersion : ui_texts::kWindowsVersion) + GetOSVersionString();
}

// Leaves the line out if its value is not available: an error window must not fail.
void AddLineIfKnown(StringAccumulator& text, std::string_view label, std::string (*get)()) {
  try {
    text.AddLine(std::string(label) + get());
  } catch (...) {  // NOLINT(bugprone-empty-catch): the text is complete without it
  }
}

}  // namespace

void ErrorForm::Compose(const std::string& message, const std::string& chain, std::int32_t code) {
  const std::vector<std::string> sections = Split(message, kSectionSeparator);
  short_text_ = sections.front();
  StringAccumulator text;
  text.Add(short_text_);
  for (std::size_t i = 1; i < sections.size(); ++i) {
    text.Add(DashLine());
    text.Add(sections[i]);
  }
  if (!chain.empty()) {
    text.Add(DashLine());
    text.AddLine(ui_texts::kChain);
    text.Add(chain);
  }
  text.Add(DashLine());
  if (code != 0) text.AddLine(ui_texts::ErrorCode(code));
  AddLineIfKnown(text, ui_texts::kUpdaterBuild, GetAppVersionString);
  AddLineIfKnown(text, "", SystemVersion);
  full_text_ = text.TakeText();
}

void ErrorForm::Execute(const std::string& message, const std::string& chain, std::int32_t code,
                        const std::string& caption) {
  // Users show this window to others, and copy its text.
  Compose(WithoutPasswords(message), WithoutPasswords(chain), code);
  const FailureKind noted = TakeNotedFailure();
  const FailureKind kind = KindOfNumber(code);
  const std::string advice = AdviceFor(kind == FailureKind::kOther ? noted : kind);
  LogEvent("error", {{"number", code}, {"text", message}, {"chain", chain}, {"advice", advice}});
  view_ = ports::CurrentPorts().front_end->MakeErrorView();
  view_->SetTexts({.title = caption.empty() ? box_titles::kError : caption,
                   .label = ui_texts::kErrorLabel,
                   .full_text_name = ui_texts::kFullTextName,
                   .short_text = short_text_,
                   .full_text = full_text_,
                   .copy_button = ui_texts::kCopy,
                   .close_button = ui_texts::kClose,
                   .advice = advice,
                   .log_label = ui_texts::kLogPlace,
                   .log_path = RunLogPath()});
  ApplyView();
  view_->Run(*this);
  view_.reset();
}

void ErrorForm::ApplyView() {
  view_->SetDetailView(detail_view_,
                       detail_view_ ? ui_texts::kLessDetails : ui_texts::kMoreDetails);
}

void ErrorForm::OnDetails() {
  detail_view_ = !detail_view_;
  ApplyView();
}

void ErrorForm::OnCopy() {
  // Without a clipboard the text is at least shown where it can be selected.
  if (!view_->CopyText(full_text_) && !detail_view_) OnDetails();
}

}  // namespace tmw
