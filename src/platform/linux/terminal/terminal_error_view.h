#pragma once

#include <string>

#include "platform/linux/terminal/terminal_screen.h"
#include "ports/error_view.h"

namespace platform {

// The error window on a terminal: the text as lines, which the user can select in the terminal, and
// a choice by letter. A terminal has no clipboard to write to.
class TerminalErrorView final : public ports::ErrorView {
 public:
  explicit TerminalErrorView(TerminalScreen& screen) : screen_(screen) {}

  void SetTexts(const ports::ErrorViewTexts& texts) override { texts_ = texts; }
  void SetDetailView(bool is_detailed, const std::string& button_text) override;
  bool CopyText(const std::string& /*text*/) override { return false; }
  void Run(ports::ErrorViewEvents& events) override;

 private:
  void Print();
  std::string LastLines() const;

  TerminalScreen& screen_;
  ports::ErrorViewTexts texts_;
  bool is_detailed_ = false;
  std::string details_button_;
};

}  // namespace platform
