#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/terminal/terminal_screen.h"
#include "platform/linux/terminal_signals.h"
#include "ports/progress_view.h"

namespace platform {

// The progress window on a terminal: a status block. Where the output is not seen on the terminal
// that shows the block, the stages are written to it, one a line.
class TerminalProgressView final : public ports::ProgressView, private StatusBlock {
 public:
  // open is the front end's pointer to the view that is on the screen.
  TerminalProgressView(TerminalScreen& screen, TerminalProgressView*& open);
  TerminalProgressView(const TerminalProgressView&) = delete;
  TerminalProgressView& operator=(const TerminalProgressView&) = delete;
  ~TerminalProgressView() override;

  void SetCaption(const std::string& text) override { Change(caption_, text); }
  void SetStage(const std::string& text) override;
  void SetDetail(const std::string& text) override { Change(detail_, text); }
  void SetPicture(const std::string& /*name*/) override {}
  void ShowBar(ports::BarKind kind) override;
  void SetProgress(double percent, const std::string& counter) override;
  void SetPace(const std::string& text) override { Change(pace_, text); }
  void SetNotes(const ports::ProgressNotes& notes) override;
  void SetButton(const std::string& caption, bool is_enabled) override;
  void Run(ports::ProgressViewEvents& events) override;
  void Close() override;

  // Acts on keys and signals that have arrived.
  void RunEvents();

  // To be called when the user has answered a question, which settles any Ctrl+C before it.
  void ForgetInterrupts() { interrupts_ = 0; }

 private:
  std::vector<std::string> Lines(int columns) const override;
  std::string BarLine(int columns) const;
  std::string CounterWords() const;
  void Change(std::string& text, const std::string& value);
  void WriteStage();

  TerminalScreen& screen_;
  TerminalProgressView*& open_;
  ports::ProgressViewEvents* events_ = nullptr;  // while it is on the screen
  std::optional<TerminalSignals> signals_;
  int interrupts_ = 0;

  std::string caption_;
  std::string stage_;
  std::string detail_;
  std::string counter_;
  std::string pace_;
  ports::ProgressNotes notes_;
  std::string button_;  // empty: disabled
  std::string written_stage_;
  ports::BarKind bar_ = ports::BarKind::kNone;
  double percent_ = 0;
};

}  // namespace platform
