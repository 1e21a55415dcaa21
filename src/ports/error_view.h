#pragma once

#include <string>

namespace ports {

// What the user does in the error window. Called from within Run only.
class ErrorViewEvents {
 public:
  virtual ~ErrorViewEvents() = default;

  // The details button.
  virtual void OnDetails() = 0;

  // The copy button, or Ctrl+C while no part of the text is selected.
  virtual void OnCopy() = 0;
};

// The texts of the error window that do not change while it is open. UTF-8; lines end in CR LF.
struct ErrorViewTexts {
  std::string title;
  std::string label;           // stands above the short text, hidden in the detailed view
  std::string full_text_name;  // not shown: the name of the full text for screen readers
  std::string short_text;
  std::string full_text;
  std::string copy_button;
  std::string close_button;
  std::string advice;     // what to do next, the last line of the short view; may be empty
  std::string log_label;  // stands before the path of the log, in both views
  std::string log_path;   // can be selected; empty: neither is shown
};

// The error window: selectable, wrapped text, resizable. All decisions are made above it.
class ErrorView {
 public:
  virtual ~ErrorView() = default;

  virtual void SetTexts(const ErrorViewTexts& texts) = 0;

  // Chooses which of the two texts is shown and sets the caption of the details button.
  virtual void SetDetailView(bool is_detailed, const std::string& button_text) = 0;

  // Puts the text on the clipboard; returns false if there is none.
  virtual bool CopyText(const std::string& text) = 0;

  // Modal: returns when the user has closed the window. If nobody can answer, prints the detailed
  // text and returns at once.
  virtual void Run(ErrorViewEvents& events) = 0;
};

}  // namespace ports
