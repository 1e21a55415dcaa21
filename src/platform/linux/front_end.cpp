#include "platform/front_end.h"

#include <unistd.h>

#include <iostream>

#include "foundation/encodings.h"
#include "foundation/text.h"

namespace platform {
namespace {

// Boxes as lines of a terminal. Texts go to the error stream, so that a redirected output stays
// clean.
class TerminalFrontEnd final : public FrontEnd {
 public:
  void ShowMessage(MessageKind kind, const std::string& title, const std::string& text) override {
    std::cerr << (kind == MessageKind::kWarning ? "[!] " : "[i] ") << title << "\n"
              << WithPlainBreaks(text) << std::endl;
  }

  bool AskYesNo(const std::string& title, const std::string& question) override {
    std::cerr << "[?] " << title << "\n" << WithPlainBreaks(question) << std::endl;
    if (!CanAnswer()) return false;
    for (;;) {
      std::cerr << "[д/н] " << std::flush;
      std::string answer;
      if (!std::getline(std::cin, answer)) return false;
      answer = tmw::LowerCase(tmw::TrimCharacters(answer, " \t\r"));
      if (answer == "д" || answer == "да" || answer == "y" || answer == "yes") return true;
      if (answer == "н" || answer == "нет" || answer == "n" || answer == "no") return false;
    }
  }

  std::optional<std::string> AskText(const std::string& title, const std::string& prompt) override {
    std::cerr << "[?] " << title << "\n" << WithPlainBreaks(prompt) << " " << std::flush;
    std::string answer;
    if (!CanAnswer() || !std::getline(std::cin, answer)) return std::nullopt;
    return answer;
  }

  void RunPendingEvents() override {}
  void ResetCursor() override {}

 private:
  static bool CanAnswer() { return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0; }

  static std::string WithPlainBreaks(const std::string& text) {
    std::string plain;
    for (const char c : text) {
      if (c != '\r') plain.push_back(c);
    }
    return plain;
  }
};

}  // namespace

std::unique_ptr<FrontEnd> MakeFrontEnd() {
  return std::make_unique<TerminalFrontEnd>();
}

}  // namespace platform
