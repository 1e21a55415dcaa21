#pragma once

#include <string>

namespace ports {

// What a person does in the error window. Raised only from within Run.
class ErrorViewEvents {
 public:
  virtual ~ErrorViewEvents() = default;

  // The details button.
  virtual void OnDetails() = 0;

  // The copy button, or Ctrl+C while no part of the text is selected.
  virtual void OnCopy() = 0;
};

// The words of the error window that never change while it is open. UTF-8; lines end in CR LF.
struct ErrorViewTexts {
  std::string title;
  std::string label;           // stands above the short text, hidden in the detailed view
  std::string full_text_name;  // never seen: how a screen reader calls the full text
  std::string short_text;
  std::string full_text;
  std::string copy_button;
  std::string close_button;
};

// The error window as a front end shows it: selectable, wrapped text, resizable. It keeps no rules.
class ErrorView {
 public:
  virtual ~ErrorView() = default;

  virtual void SetTexts(const ErrorViewTexts& texts) = 0;

  // Which of the two texts is seen, and what the details button reads.
  virtual void SetDetailView(bool is_detailed, const std::string& button_text) = 0;

  // Puts the text on the clipboard; false where there is none.
  virtual bool CopyText(const std::string& text) = 0;

  // Modal: returns when the person has closed the window. Where nobody can answer the detailed text
  // is printed and the call returns at once.
  virtual void Run(ErrorViewEvents& events) = 0;
};

}  // namespace ports
