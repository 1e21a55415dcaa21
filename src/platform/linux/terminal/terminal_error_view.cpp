#include "platform/linux/terminal/terminal_error_view.h"

#include <optional>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "platform/linux/linux_texts.h"
#include "platform/linux/terminal/terminal_text.h"

namespace platform {
void TerminalErrorView::SetDetailView(bool is_detailed, const std::string& button_text) {
  is_detailed_ = is_detailed;
  details_button_ = button_text;
}

void TerminalErrorView::Run(ports::ErrorViewEvents& events) {
  const TerminalScreen::Box box(screen_);
  Terminal& terminal = screen_.GetTerminal();
  const std::string title = "[!] " + texts_.title + "\n";
  if (!terminal.CanAnswer()) {
    terminal.Write(title + texts_.full_text + "\n" + LastLines());
    return;
  }
  terminal.Write(title);
  Print();
  for (;;) {
    terminal.Write(std::string("[") + linux_texts::kDetailsKeys[0] + "] " + details_button_ +
                   "   [" + linux_texts::kCloseKeys[0] + "] " + texts_.close_button + ": ");
    const std::optional<std::string> line = terminal.ReadLine(false);
    const std::string key = tmw::LowerCase(tmw::TrimCharacters(line.value_or(""), " \t\r"));
    if (!line) terminal.Write("\n");
    if (!line || key.empty() || IsOneOf(key, linux_texts::kCloseKeys)) return;
    if (!IsOneOf(key, linux_texts::kDetailsKeys)) continue;
    events.OnDetails();
    Print();
  }
}

// Below either text: what to do next and where the log is.
std::string TerminalErrorView::LastLines() const {
  const std::string advice = texts_.advice.empty() ? "" : texts_.advice + "\n";
  const bool has_log = !texts_.log_path.empty();
  return advice + (has_log ? texts_.log_label + " " + texts_.log_path + "\n" : "");
}

void TerminalErrorView::Print() {
  const std::string label = texts_.label.empty() ? "" : texts_.label + "\n";
  screen_.GetTerminal().Write((is_detailed_ ? texts_.full_text : label + texts_.short_text + "\n") +
                              LastLines());
}

}  // namespace platform
