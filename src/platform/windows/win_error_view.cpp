#include "platform/windows/win_error_view.h"

#include <algorithm>
#include <utility>

#include "platform/windows/clipboard.h"
#include "platform/windows/wide.h"

namespace platform {
namespace {

// Lengths for 96 dots per inch.
constexpr SIZE kClient{660, 320};
constexpr int kMargin = 16;
constexpr int kSign = 32;
constexpr int kLabelLine = 20;

constexpr DWORD kTextStyle = WS_TABSTOP | WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL;

// A multi-line text box takes Tab, Enter and Esc, which are meant for the window.
LRESULT CALLBACK TextProcedure(HWND box, UINT message, WPARAM parameter, LPARAM data) {
  const auto original = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(box, GWLP_USERDATA));
  if (message == WM_GETDLGCODE) return DLGC_WANTARROWS | DLGC_WANTCHARS;
  return CallWindowProcW(original, box, message, parameter, data);
}

class WinErrorView final : public ports::ErrorView, private ViewWindow {
 public:
  explicit WinErrorView(OpenWindows& open)
      : ViewWindow(open, WS_THICKFRAME | WS_MAXIMIZEBOX, kClient) {
    label_ = AddControl(L"STATIC", SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS, kErrorLabelId);
    short_ = AddTextBox(kErrorShortId);
    // A screen reader names a text box by the label before it, which need not be seen.
    full_name_ = AddControl(L"STATIC", SS_NOPREFIX, kErrorFullNameId);
    ShowWindow(full_name_, SW_HIDE);
    full_ = AddTextBox(kErrorFullId);
    advice_ = AddControl(L"STATIC", SS_LEFT | SS_NOPREFIX | SS_EDITCONTROL, kErrorAdviceId);
    log_label_ = AddControl(L"STATIC", SS_LEFT | SS_NOPREFIX, kErrorLogLabelId);
    log_path_ = AddControl(L"EDIT", WS_TABSTOP | ES_READONLY | ES_AUTOHSCROLL, kErrorLogPathId);
    details_ = AddButton(kErrorDetailsId);
    copy_ = AddButton(kErrorCopyId);
    close_ = AddButton(kErrorCloseId);
    Prepare();
    SetDetailView(false, "");
  }

  void SetTexts(const ports::ErrorViewTexts& texts) override {
    texts_ = texts;
    SetControlText(Get(), texts.title);
    SetControlText(label_, texts.label);
    SetControlText(full_name_, texts.full_text_name);
    SetControlText(short_, texts.short_text);
    SetControlText(full_, texts.full_text);
    SetControlText(advice_, texts.advice);
    SetControlText(log_label_, texts.log_label);
    SetControlText(log_path_, texts.log_path);
    ShowParts();
    SetControlText(copy_, texts.copy_button);
    SetControlText(close_, texts.close_button);
    Arrange();
  }

  void SetDetailView(bool is_detailed, const std::string& button_text) override {
    is_detailed_ = is_detailed;
    const HWND hidden = is_detailed ? short_ : full_;
    if (GetFocus() == hidden) SetFocus(details_);
    ShowWindow(hidden, SW_HIDE);
    ShowParts();
    ShowWindow(Visible(), SW_SHOWNA);
    SetControlText(details_, button_text);
    Arrange();
  }

  bool CopyText(const std::string& text) override { return PutTextOnClipboard(Get(), text); }

  void Run(ports::ErrorViewEvents& events) override {
    if (Get() == nullptr) {
      MessageBoxW(nullptr, ToWide(texts_.full_text).c_str(), ToWide(texts_.title).c_str(),
                  MB_OK | MB_ICONWARNING | MB_TASKMODAL | MB_SETFOREGROUND);
      return;
    }
    events_ = &events;
    is_closed_ = false;
    Open().CallAttention();
    const Showing showing(*this);
    Open().RunPending();
    while (!is_closed_ && Open().WaitAndRun()) {
    }
    events_ = nullptr;
  }

  bool TakeKey(const MSG& message) override {
    const bool is_control = GetKeyState(VK_CONTROL) < 0;
    if (!is_control || GetKeyState(VK_SHIFT) < 0 || GetKeyState(VK_MENU) < 0) return false;
    if (message.wParam == 'A') {
      SetFocus(Visible());
      SendMessageW(Visible(), EM_SETSEL, 0, -1);
      return true;
    }
    if ((message.wParam != 'C' && message.wParam != VK_INSERT) || HasSelection()) return false;
    is_copy_asked_ = true;
    return true;
  }

  void RaiseRequests() override {
    if (events_ == nullptr) return;
    if (std::exchange(is_details_asked_, false)) events_->OnDetails();
    if (std::exchange(is_copy_asked_, false)) events_->OnCopy();
  }

 private:
  HWND AddTextBox(int id) {
    const HWND box = AddControl(L"EDIT", kTextStyle, id, WS_EX_CLIENTEDGE);
    if (box == nullptr) return box;
    SendMessageW(box, EM_SETLIMITTEXT, 0, 0);  // as much as the memory holds
    SetWindowLongPtrW(box, GWLP_USERDATA, GetWindowLongPtrW(box, GWLP_WNDPROC));
    SetWindowLongPtrW(box, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&TextProcedure));
    return box;
  }

  HWND Visible() const { return is_detailed_ ? full_ : short_; }

  bool HasSelection() const {
    DWORD from = 0;
    DWORD to = 0;
    SendMessageW(GetFocus() == Visible() ? Visible() : nullptr, EM_GETSEL,
                 reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
    return from != to;
  }

  void ShowParts() const {
    ShowWindow(label_, is_detailed_ ? SW_HIDE : SW_SHOWNA);
    ShowWindow(advice_, is_detailed_ || texts_.advice.empty() ? SW_HIDE : SW_SHOWNA);
    const int log = texts_.log_path.empty() ? SW_HIDE : SW_SHOWNA;
    ShowWindow(log_label_, log);
    ShowWindow(log_path_, log);
  }

  // The line of the log above the bottom; returns its top.
  int LayOutLog(int left, int right, int bottom) const {
    if (texts_.log_path.empty()) return bottom;
    const int line = Scaled(kLabelLine);
    const int label = MeasureText(log_label_, Font(), ToWide(texts_.log_label).c_str()).cx;
    const int path_left = left + label + Scaled(8);
    MoveWindow(log_label_, left, bottom - line, label, line, FALSE);
    MoveWindow(log_path_, path_left, bottom - line, right - path_left, line, FALSE);
    return bottom - line - Scaled(8);
  }

  // As many lines as the advice takes in that width, at most three.
  int AdviceHeight(int width) const {
    if (texts_.advice.empty()) return 0;
    const SIZE size = MeasureText(advice_, Font(), ToWide(texts_.advice).c_str());
    // Words that move to the next line leave room.
    const int lines = size.cx * 10 / std::max(1, width * 9) + 1;
    return std::min(lines, 3) * Scaled(kLabelLine);
  }

  void LayOut(SIZE client) override {
    const int margin = Scaled(kMargin);
    const int left = margin + Scaled(kSign) + margin;
    const int right = client.cx - margin;
    const int bottom = LayOutLog(margin, right, client.cy - FooterHeight() - margin / 2);
    const int short_top = margin + Scaled(kLabelLine + 6);
    MoveWindow(label_, left, margin, right - left, Scaled(kLabelLine), FALSE);
    const int advice_height = AdviceHeight(right - left);
    const int advice_top = bottom - advice_height;
    const int short_bottom = advice_height == 0 ? bottom : advice_top - Scaled(8);
    MoveWindow(short_, left, short_top, right - left, std::max(0, short_bottom - short_top), FALSE);
    MoveWindow(advice_, left, advice_top, right - left, advice_height, FALSE);
    MoveWindow(full_, margin, margin, right - margin, std::max(0, bottom - margin), FALSE);
    const int close_left = right - FooterButtonWidth(close_);
    PlaceFooterButton(close_, close_left, client);
    PlaceFooterButton(copy_, close_left - Scaled(8) - FooterButtonWidth(copy_), client);
    PlaceFooterButton(details_, margin, client);
    for (const HWND box : {short_, full_})
      ShowScrollBar(box, SB_VERT, IsHigherThanBox(box) ? TRUE : FALSE);
  }

  // A scroll bar that cannot scroll is only clutter.
  bool IsHigherThanBox(HWND box) const {
    RECT inside{};
    GetClientRect(box, &inside);
    const auto lines = static_cast<int>(SendMessageW(box, EM_GETLINECOUNT, 0, 0));
    return lines * MeasureText(box, Font(), L"Ш").cy > inside.bottom;
  }

  void SetFonts() override { sign_ = LoadWarningSign(Scaled(kSign)); }

  void Draw(HDC dc) override {
    if (is_detailed_ || !sign_) return;
    const int size = Scaled(kSign);
    DrawIconEx(dc, Scaled(kMargin), Scaled(kMargin), sign_.Get(), size, size, 0, nullptr,
               DI_NORMAL);
  }

  int DefaultButton() override { return kErrorCloseId; }

  void OnCommand(int id) override {
    if (id == kErrorDetailsId) is_details_asked_ = true;
    if (id == kErrorCopyId) is_copy_asked_ = true;
    if (id == kErrorCloseId || id == IDCANCEL) is_closed_ = true;
    WakeLoop();
  }

  std::optional<LRESULT> OnMessage(UINT /*message*/, WPARAM /*parameter*/,
                                   LPARAM /*data*/) override {
    return std::nullopt;
  }

  ports::ErrorViewEvents* events_ = nullptr;
  ports::ErrorViewTexts texts_;
  bool is_closed_ = false;
  bool is_details_asked_ = false;
  bool is_copy_asked_ = false;
  bool is_detailed_ = false;
  UniqueIcon sign_;
  HWND label_ = nullptr;
  HWND short_ = nullptr;
  HWND full_name_ = nullptr;
  HWND full_ = nullptr;
  HWND advice_ = nullptr;
  HWND log_label_ = nullptr;
  HWND log_path_ = nullptr;
  HWND details_ = nullptr;
  HWND copy_ = nullptr;
  HWND close_ = nullptr;
};

}  // namespace

std::unique_ptr<ports::ErrorView> MakeWinErrorView(OpenWindows& open) {
  return std::make_unique<WinErrorView>(open);
}

}  // namespace platform
