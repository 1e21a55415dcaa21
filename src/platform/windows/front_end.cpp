#include "platform/factories.h"

#include "platform/windows/advice_box.h"
#include "platform/windows/input_box.h"
#include "platform/windows/save_box.h"
#include "platform/windows/view_window.h"
#include "platform/windows/wide.h"
#include "platform/windows/win_error_view.h"
#include "platform/windows/win_progress_view.h"
#include "ports/front_end.h"

namespace platform {
namespace {

// The first window with a caption that a process shows takes the shape that its starter wished
// (hidden, minimised, maximised), whatever the call says. It is this one, which nobody sees: a
// layered window without contents.
void SpendStartersWish() {
  const HWND window =
      CreateWindowExW(WS_EX_LAYERED | WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, L"STATIC", L"",
                      WS_POPUP | WS_CAPTION, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
  if (window == nullptr) return;
  ShowWindow(window, SW_SHOWNORMAL);
  DestroyWindow(window);
}

class WindowsFrontEnd final : public ports::FrontEnd {
 public:
  WindowsFrontEnd() { SpendStartersWish(); }

  bool CanAsk() override { return true; }

  void ShowMessage(ports::MessageKind kind, const std::string& title, const std::string& text,
                   const std::string& advice) override {
    open_.CallAttention();
    if (!advice.empty() && ShowAdviceBox(open_.Top(), kind, title, text, advice)) return;
    const UINT icon =
        kind == ports::MessageKind::kWarning ? MB_ICONEXCLAMATION : MB_ICONINFORMATION;
    Show(title, advice.empty() ? text : text + "\r\n\r\n" + advice, MB_OK | icon);
  }

  bool AskYesNo(const std::string& title, const std::string& question) override {
    return Show(title, question, MB_YESNO | MB_ICONQUESTION) == IDYES;
  }

  std::optional<std::string> AskText(const std::string& title, const std::string& prompt,
                                     bool is_secret) override {
    open_.CallAttention();
    return ShowInputBox(open_.Top(), title, prompt, is_secret);
  }

  std::optional<std::string> AskSavePlace(const std::string& title,
                                          const std::string& suggested_name) override {
    open_.CallAttention();
    return ShowSaveBox(open_.Top(), title, suggested_name);
  }

  void RunPendingEvents() override { open_.RunPending(); }

  void ResetCursor() override { SetCursor(LoadCursorW(nullptr, IDC_ARROW)); }

  std::unique_ptr<ports::ProgressView> MakeProgressView() override {
    return MakeWinProgressView(open_);
  }
  std::unique_ptr<ports::ErrorView> MakeErrorView() override { return MakeWinErrorView(open_); }

 private:
  int Show(const std::string& title, const std::string& text, UINT flags) {
    open_.CallAttention();
    const HWND owner = open_.Top();
    // Only a box without a window comes to the front by itself.
    const UINT manner = owner == nullptr ? MB_TASKMODAL | MB_SETFOREGROUND : MB_APPLMODAL;
    return MessageBoxW(owner, ToWide(text).c_str(), ToWide(title).c_str(), flags | manner);
  }

  OpenWindows open_;
};

}  // namespace

std::unique_ptr<ports::FrontEnd> MakeFrontEnd(bool /*in_terminal*/) {
  return std::make_unique<WindowsFrontEnd>();
}

}  // namespace platform
