#pragma once

#include <memory>
#include <optional>

#include "platform/linux/qt/qt_application.h"
#include "platform/linux/terminal_signals.h"
#include "ports/progress_view.h"

namespace platform {

class ProgressDialog;

// The progress window in Qt. What the user does, here or in the terminal the program was started
// from, is recorded while events are processed and reported afterwards, so that no exception of the
// listener passes through Qt.
class QtProgressView final : public ports::ProgressView, private OpenWindow {
 public:
  explicit QtProgressView(QtApplication& application);
  ~QtProgressView() override;

  void SetCaption(const std::string& text) override;
  void SetStage(const std::string& text) override;
  void SetDetail(const std::string& text) override;
  void SetPicture(const std::string& name) override;
  void ShowBar(ports::BarKind kind) override;
  void SetProgress(double percent, const std::string& counter) override;
  void SetPace(const std::string& text) override;
  void SetNotes(const ports::ProgressNotes& notes) override;
  void SetButton(const std::string& caption, bool is_enabled) override;
  void Run(ports::ProgressViewEvents& events) override;
  void Close() override;

 private:
  QWidget& Widget() override;
  void RaiseEvents() override;
  bool IsEndAsked() override;
  void ForgetPresses() override;

  void ShowAndWaitForScreen();
  void NoteSignals();

  QtApplication& application_;
  std::unique_ptr<ProgressDialog> dialog_;
  ports::ProgressViewEvents* events_ = nullptr;  // while the window is open
  std::optional<TerminalSignals> signals_;
  int interrupts_ = 0;
  bool is_stop_noted_ = false;
  bool is_raising_ = false;
};

}  // namespace platform
