#include "platform/linux/terminal/terminal_front_end.h"

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "platform/linux/linux_texts.h"
#include "platform/linux/terminal/terminal_error_view.h"
#include "platform/linux/terminal/terminal_progress_view.h"
#include "platform/linux/terminal/terminal_screen.h"
#include "platform/linux/terminal/terminal_text.h"

namespace platform {
namespace {

class TerminalFrontEnd final : public ports::FrontEnd {
 public:
  bool CanAsk() override { return terminal_.CanAnswer(); }

  void ShowMessage(ports::MessageKind kind, const std::string& title, const std::string& text,
                   const std::string& advice) override {
    const TerminalScreen::Box box(screen_);
    terminal_.Write((kind == ports::MessageKind::kWarning ? "[!] " : "[i] ") + title + "\n" + text +
                    "\n" + (advice.empty() ? "" : advice + "\n"));
  }

  bool AskYesNo(const std::string& title, const std::string& question) override {
    const TerminalScreen::Box box(screen_);
    terminal_.Write("[?] " + title + "\n" + question + "\n");
    if (!CanAsk()) {
      terminal_.Write(linux_texts::kNobodyAnswers);
      return false;
    }
    const std::optional<bool> answer = ReadYesNo();
    if (!answer) terminal_.Write("\n");
    if (answer && open_view_ != nullptr) open_view_->ForgetInterrupts();
    return answer.value_or(false);
  }

  std::optional<std::string> AskText(const std::string& title, const std::string& prompt,
                                     bool is_secret) override {
    const TerminalScreen::Box box(screen_);
    terminal_.Write("[?] " + title + "\n" + prompt + "\n");
    if (!CanAsk()) return std::nullopt;
    terminal_.Write("> ");
    std::optional<std::string> answer = terminal_.ReadLine(is_secret);
    if (is_secret || !answer) terminal_.Write("\n");
    return answer;
  }

  std::optional<std::string> AskSavePlace(const std::string& /*title*/,
                                          const std::string& suggested_name) override {
    return suggested_name;
  }

  void RunPendingEvents() override {
    if (open_view_ != nullptr) open_view_->RunEvents();
  }

  void ResetCursor() override {}

  std::unique_ptr<ports::ProgressView> MakeProgressView() override {
    return std::make_unique<TerminalProgressView>(screen_, open_view_);
  }

  std::unique_ptr<ports::ErrorView> MakeErrorView() override {
    return std::make_unique<TerminalErrorView>(screen_);
  }

 private:
  // Nothing when the question was left without an answer.
  std::optional<bool> ReadYesNo() {
    for (;;) {
      terminal_.Write(linux_texts::kYesOrNo);
      const std::optional<std::string> line = terminal_.ReadLine(false);
      if (!line) return std::nullopt;
      const std::string answer = tmw::LowerCase(tmw::TrimCharacters(*line, " \t\r"));
      if (IsOneOf(answer, linux_texts::kYesWords)) return true;
      if (IsOneOf(answer, linux_texts::kNoWords)) return false;
      terminal_.Write(linux_texts::kSayYesOrNo);
    }
  }

  TerminalScreen screen_;
  Terminal& terminal_ = screen_.GetTerminal();
  TerminalProgressView* open_view_ = nullptr;
};

}  // namespace

std::unique_ptr<ports::FrontEnd> MakeTerminalFrontEnd() {
  return std::make_unique<TerminalFrontEnd>();
}

}  // namespace platform
