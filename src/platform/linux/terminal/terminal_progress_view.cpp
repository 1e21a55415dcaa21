#include "platform/linux/terminal/terminal_progress_view.h"

#include <poll.h>

#include <algorithm>
#include <cmath>

#include "platform/linux/terminal/terminal_text.h"

namespace platform {
namespace {

constexpr int kIdleMilliseconds = 50;
constexpr int kNarrowestBar = 10;
constexpr int kWidestBar = 40;

std::string Repeated(std::string_view text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i)
    result += text;
  return result;
}

}  // namespace

TerminalProgressView::TerminalProgressView(TerminalScreen& screen, TerminalProgressView*& open)
    : screen_(screen), open_(open) {}

TerminalProgressView::~TerminalProgressView() {
  Close();
}

void TerminalProgressView::Run(ports::ProgressViewEvents& events) {
  events_ = &events;
  open_ = this;
  signals_.emplace();
  screen_.Attach(*this);
  WriteStage();
  events.OnShown();
  while (events_ != nullptr) {
    poll(nullptr, 0, kIdleMilliseconds);
    RunEvents();
  }
}

void TerminalProgressView::Close() {
  if (events_ == nullptr) return;
  screen_.Detach();
  signals_.reset();
  open_ = nullptr;
  events_ = nullptr;
}

void TerminalProgressView::RunEvents() {
  while (events_ != nullptr && signals_->HasNews()) {
    const TerminalSignals::News news = signals_->Take();
    if (news.is_continued) screen_.Resume();
    if (news.is_resized) screen_.Draw();
    interrupts_ += news.interrupts;
    if (news.is_stop || (news.interrupts > 0 && interrupts_ > 1)) {
      events_->OnStop();
    } else if (news.interrupts > 0) {
      events_->OnCancel();
    }
  }
}

void TerminalProgressView::Change(std::string& text, const std::string& value) {
  text = value;
  if (events_ != nullptr) screen_.Draw();
}

void TerminalProgressView::SetStage(const std::string& text) {
  Change(stage_, text);
  WriteStage();
}

void TerminalProgressView::WriteStage() {
  const Terminal& terminal = screen_.GetTerminal();
  const bool is_seen = terminal.HasCursor() && terminal.IsOutputSeen();
  if (events_ == nullptr || is_seen || stage_.empty() || stage_ == written_stage_) return;
  written_stage_ = stage_;
  terminal.WriteOutput(stage_ + "\n");
}

void TerminalProgressView::ShowBar(ports::BarKind kind) {
  bar_ = kind;
  if (events_ != nullptr) screen_.Draw();
}

void TerminalProgressView::SetProgress(double percent, const std::string& counter) {
  percent_ = percent;
  Change(counter_, counter);
}

void TerminalProgressView::SetNotes(const ports::ProgressNotes& notes) {
  notes_ = notes;
  if (events_ != nullptr) screen_.Draw();
}

void TerminalProgressView::SetButton(const std::string& caption, bool is_enabled) {
  Change(button_, is_enabled ? caption : "");
}

std::vector<std::string> TerminalProgressView::Lines(int columns) const {
  std::vector<std::string> lines;
  const std::string bar = ports::HasBar(bar_)       ? BarLine(columns)
                          : ports::HasCounter(bar_) ? CounterWords()
                                                    : "";
  const bool has_both = !notes_.step.empty() && !notes_.component.empty();
  const std::string notes = notes_.step + (has_both ? ": " : "") + notes_.component;
  const std::string key = button_.empty() ? "" : "Ctrl+C: " + button_;
  for (const std::string& line : {caption_, stage_, detail_, notes, bar, pace_, key}) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

std::string TerminalProgressView::CounterWords() const {
  return notes_.unit.empty() ? counter_ : counter_ + " " + notes_.unit;
}

std::string TerminalProgressView::BarLine(int columns) const {
  // Rounded down: 100 appears only at the end.
  const std::string percent = std::to_string(static_cast<int>(std::floor(percent_)));
  std::string words =
      " " + std::string(3 - std::min<std::size_t>(percent.size(), 3), ' ') + percent + " %";
  if (ports::HasCounter(bar_)) words += "  " + CounterWords();
  const int width = std::min(columns - ColumnsOf(words), kWidestBar);
  if (width < kNarrowestBar) return words.substr(1);
  const int filled = std::clamp(static_cast<int>(percent_ / 100 * width), 0, width);
  const bool has_blocks = screen_.GetTerminal().AsSeen("█░") == "█░";
  return Repeated(has_blocks ? "█" : "#", filled) +
         Repeated(has_blocks ? "░" : "-", width - filled) + words;
}

}  // namespace platform
