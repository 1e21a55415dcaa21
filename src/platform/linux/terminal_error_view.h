#pragma once

#include <string>

#include "platform/error_view.h"
#include "platform/linux/terminal_screen.h"

namespace platform {

// The window of an error on a terminal: the text as lines, which the terminal lets the person
// select, and a choice by letter. A terminal has no clipboard to write to.
class TerminalErrorView final : public ErrorView {
 public:
  explicit TerminalErrorView(TerminalScreen& screen) : screen_(screen) {}

  void SetTexts(const ErrorViewTexts& texts) override { texts_ = texts; }
  void SetDetailView(bool is_detailed, const std::string& button_text) override;
  bool CopyText(const std::string& /*text*/) override { return false; }
  void Run(ErrorViewEvents& events) override;

 private:
  void Print();

  TerminalScreen& screen_;
  ErrorViewTexts texts_;
  bool is_detailed_ = false;
  std::string details_button_;
};

}  // namespace platform
