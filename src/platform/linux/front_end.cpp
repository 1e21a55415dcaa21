#include "platform/front_end.h"

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "platform/linux/terminal.h"

namespace platform {
namespace {

// Boxes as lines of a terminal.
class TerminalFrontEnd final : public FrontEnd {
 public:
  bool CanAsk() override { return terminal_.CanAnswer(); }

  void ShowMessage(MessageKind kind, const std::string& title, const std::string& text) override {
    terminal_.Write((kind == MessageKind::kWarning ? "[!] " : "[i] ") + title + "\n" + text + "\n");
  }

  bool AskYesNo(const std::string& title, const std::string& question) override {
    terminal_.Write("[?] " + title + "\n" + question + "\n");
    if (!CanAsk()) return false;
    for (;;) {
      terminal_.Write("[д/н] ");
      const std::optional<std::string> line = terminal_.ReadLine(false);
      if (!line) break;
      const std::string answer = tmw::LowerCase(tmw::TrimCharacters(*line, " \t\r"));
      if (answer == "д" || answer == "да" || answer == "y" || answer == "yes") return true;
      if (answer == "н" || answer == "нет" || answer == "n" || answer == "no") return false;
      terminal_.Write("Введите \"д\" (да) или \"н\" (нет).\n");
    }
    terminal_.Write("\n");
    return false;
  }

  std::optional<std::string> AskText(const std::string& title, const std::string& prompt,
                                     bool is_secret) override {
    terminal_.Write("[?] " + title + "\n" + prompt + "\n");
    if (!CanAsk()) return std::nullopt;
    terminal_.Write("> ");
    std::optional<std::string> answer = terminal_.ReadLine(is_secret);
    if (is_secret || !answer) terminal_.Write("\n");
    return answer;
  }

  void RunPendingEvents() override {}
  void ResetCursor() override {}

 private:
  Terminal terminal_;
};

}  // namespace

std::unique_ptr<FrontEnd> MakeFrontEnd() {
  return std::make_unique<TerminalFrontEnd>();
}

}  // namespace platform
