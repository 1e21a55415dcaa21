#include "platform/front_end.h"

#include "platform/windows/input_box.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"

namespace platform {
namespace {

class WindowsFrontEnd final : public FrontEnd {
 public:
  bool CanAsk() override { return true; }

  void ShowMessage(MessageKind kind, const std::string& title, const std::string& text) override {
    const UINT icon = kind == MessageKind::kWarning ? MB_ICONEXCLAMATION : MB_ICONINFORMATION;
    Show(title, text, MB_OK | icon);
  }

  bool AskYesNo(const std::string& title, const std::string& question) override {
    return Show(title, question, MB_YESNO | MB_ICONQUESTION) == IDYES;
  }

  std::optional<std::string> AskText(const std::string& title, const std::string& prompt,
                                     bool is_secret) override {
    return ShowInputBox(title, prompt, is_secret);
  }

  void RunPendingEvents() override {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
      if (message.message == WM_QUIT) {
        PostQuitMessage(static_cast<int>(message.wParam));
        return;
      }
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }

  void ResetCursor() override { SetCursor(LoadCursorW(nullptr, IDC_ARROW)); }

 private:
  static int Show(const std::string& title, const std::string& text, UINT flags) {
    return MessageBoxW(GetActiveWindow(), ToWide(text).c_str(), ToWide(title).c_str(),
                       flags | MB_TASKMODAL | MB_SETFOREGROUND);
  }
};

}  // namespace

std::unique_ptr<FrontEnd> MakeFrontEnd() {
  return std::make_unique<WindowsFrontEnd>();
}

}  // namespace platform
