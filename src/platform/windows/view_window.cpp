#include "platform/windows/view_window.h"

#include <algorithm>

#include "platform/windows/wide.h"

namespace platform {
namespace {

// Since Windows 10 1703: which size the window wants on a screen of another scale.
constexpr UINT kGetDpiScaledSize = 0x02E4;

constexpr wchar_t kWindowClass[] = L"TmWebUpdate.Window";

void RegisterWindowClass(WNDPROC procedure) {
  WNDCLASSEXW record{};
  record.cbSize = sizeof(record);
  record.lpfnWndProc = procedure;
  record.hInstance = GetModuleHandleW(nullptr);
  record.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  record.lpszClassName = kWindowClass;
  RegisterClassExW(&record);  // fails harmlessly when it is registered already
}

bool IsKeyPress(const MSG& message) {
  return message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN;
}

}  // namespace

HWND OpenWindows::Top() const {
  return windows_.empty() ? nullptr : windows_.back()->Get();
}

void OpenWindows::CallAttention() const {
  const HWND owner = Top();
  if (owner == nullptr) return;
  if (IsIconic(owner) != FALSE) ShowWindow(owner, SW_SHOWNOACTIVATE);
  FLASHWINFO flash{};
  flash.cbSize = sizeof(flash);
  flash.hwnd = owner;
  flash.dwFlags = FLASHW_TRAY | FLASHW_TIMERNOFG;
  if (GetForegroundWindow() != owner) FlashWindowEx(&flash);
}

void OpenWindows::Dispatch(MSG& message) const {
  for (ViewWindow* const window : windows_) {
    const bool is_ours = message.hwnd == window->Get() || IsChild(window->Get(), message.hwnd);
    if (!is_ours) continue;
    if (IsKeyPress(message) && window->TakeKey(message)) return;
    if (IsDialogMessageW(window->Get(), &message) != FALSE) return;
  }
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

void OpenWindows::RaiseRequests() const {
  // A copy: a listener may open a window.
  const std::vector<ViewWindow*> windows = windows_;
  for (ViewWindow* const window : windows)
    window->RaiseRequests();
}

void OpenWindows::RunPending() {
  std::optional<int> quit;
  MSG message{};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
    if (message.message == WM_QUIT) {
      quit = static_cast<int>(message.wParam);
    } else {
      Dispatch(message);
    }
  }
  // Not before the queue is empty: a posted request to end would hide clicks and paintings.
  if (quit) PostQuitMessage(*quit);
  RaiseRequests();
}

bool OpenWindows::WaitAndRun() {
  MSG message{};
  const BOOL result = GetMessageW(&message, nullptr, 0, 0);
  if (result == 0) PostQuitMessage(static_cast<int>(message.wParam));
  if (result <= 0) return false;
  Dispatch(message);
  RaiseRequests();
  return true;
}

ViewWindow::ViewWindow(OpenWindows& open, DWORD style, SIZE client) : open_(open), client_(client) {
  RegisterWindowClass(Procedure);
  const HWND owner = open.Top();
  CreateWindowExW(owner == nullptr ? WS_EX_APPWINDOW : 0, kWindowClass, L"",
                  style | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN, CW_USEDEFAULT, CW_USEDEFAULT,
                  client.cx, client.cy, owner, nullptr, GetModuleHandleW(nullptr), this);
}

ViewWindow::~ViewWindow() {
  if (window_ == nullptr) return;
  SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
  DestroyWindow(window_);
}

HWND ViewWindow::AddControl(const wchar_t* window_class, DWORD style, int id,
                            DWORD extended_style) {
  if (window_ == nullptr) return nullptr;
  return CreateWindowExW(extended_style, window_class, L"", style | WS_CHILD | WS_VISIBLE, 0, 0, 0,
                         0, window_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                         GetModuleHandleW(nullptr), nullptr);
}

void ViewWindow::Prepare() {
  if (window_ == nullptr) return;
  SetScale(GetWindowDpi(window_));
  const SIZE outer = GetOuterSize(window_, {Scaled(client_.cx), Scaled(client_.cy)}, dpi_);
  SetWindowPos(window_, nullptr, 0, 0, outer.cx, outer.cy,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  LayOut(ClientSize());
}

void ViewWindow::SetScale(int dpi) {
  dpi_ = dpi;
  font_ = MakeMessageFont(dpi_);
  for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr;
       child = GetWindow(child, GW_HWNDNEXT)) {
    SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font_.Get()), FALSE);
  }
  small_icon_ = LoadPicture(kProgramPicture, Scaled(16));
  big_icon_ = LoadPicture(kProgramPicture, Scaled(32));
  SendMessageW(window_, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(small_icon_.Get()));
  SendMessageW(window_, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(big_icon_.Get()));
  SetFonts();
}

void ViewWindow::Arrange() {
  LayOut(ClientSize());
  RedrawWindow(window_, nullptr, nullptr,
               RDW_INVALIDATE | RDW_FRAME | RDW_UPDATENOW | RDW_ALLCHILDREN);
}

SIZE ViewWindow::ClientSize() const {
  RECT client{};
  GetClientRect(window_, &client);
  return {client.right, client.bottom};
}

SIZE ViewWindow::ClientAt(int dpi) const {
  const bool is_resizable = (GetWindowLongW(window_, GWL_STYLE) & WS_THICKFRAME) != 0;
  const SIZE from = is_resizable ? ClientSize() : client_;
  const int from_dpi = is_resizable ? dpi_ : USER_DEFAULT_SCREEN_DPI;
  return {MulDiv(from.cx, dpi, from_dpi), MulDiv(from.cy, dpi, from_dpi)};
}

void ViewWindow::FitClient(SIZE wanted) const {
  const SIZE client = ClientSize();
  const bool fits = client.cx == wanted.cx && client.cy == wanted.cy;
  if (fits || IsZoomed(window_) != FALSE || IsIconic(window_) != FALSE) return;
  RECT outer{};
  GetWindowRect(window_, &outer);
  SetWindowPos(window_, nullptr, 0, 0, outer.right - outer.left + wanted.cx - client.cx,
               outer.bottom - outer.top + wanted.cy - client.cy,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

int ViewWindow::FooterButtonWidth(HWND button) const {
  wchar_t text[64] = {};
  GetWindowTextW(button, text, 64);
  const int needed = MeasureText(window_, Font(), text).cx + Scaled(24);
  return std::max(Scaled(88), needed);
}

void ViewWindow::PlaceFooterButton(HWND button, int left, SIZE client) const {
  const int height = Scaled(26);
  const int top = client.cy - (FooterHeight() + height) / 2;
  MoveWindow(button, left, top, FooterButtonWidth(button), height, FALSE);
}

void ViewWindow::Place(HWND owner) const {
  RECT area{};
  if (owner == nullptr || GetWindowRect(owner, &area) == FALSE || IsIconic(owner) != FALSE) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromWindow(window_, MONITOR_DEFAULTTONEAREST), &monitor);
    area = monitor.rcWork;
  }
  RECT own{};
  GetWindowRect(window_, &own);
  const int left = (area.left + area.right - (own.right - own.left)) / 2;
  const int top = (area.top + area.bottom - (own.bottom - own.top)) / 2;
  SetWindowPos(window_, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

ViewWindow::Showing::Showing(ViewWindow& view) : view_(view), owner_(view.open_.Top()) {
  view_.Place(owner_);
  if (owner_ != nullptr) EnableWindow(owner_, FALSE);
  view_.open_.Add(view_);
  view_.focus_ = GetDlgItem(view_.window_, view_.DefaultButton());
  ShowWindow(view_.window_, SW_SHOWNORMAL);
  UpdateWindow(view_.window_);
}

ViewWindow::Showing::~Showing() {
  view_.open_.Remove(view_);
  // Before hiding: otherwise the system would activate another program's window.
  if (owner_ != nullptr) EnableWindow(owner_, TRUE);
  ShowWindow(view_.window_, SW_HIDE);
}

LRESULT CALLBACK ViewWindow::Procedure(HWND window, UINT message, WPARAM parameter, LPARAM data) {
  if (message == WM_NCCREATE) {
    auto* const created =
        static_cast<ViewWindow*>(reinterpret_cast<CREATESTRUCTW*>(data)->lpCreateParams);
    created->window_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
    return DefWindowProcW(window, message, parameter, data);  // nothing else is ready yet
  }
  auto* const view = reinterpret_cast<ViewWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (view == nullptr || !view->font_) return DefWindowProcW(window, message, parameter, data);
  return view->Handle(message, parameter, data);
}

LRESULT ViewWindow::Handle(UINT message, WPARAM parameter, LPARAM data) {
  if (const auto result = OnMessage(message, parameter, data)) return *result;
  if (const auto result = HandleScale(message, parameter, data)) return *result;
  if (const auto result = HandleFocus(message, parameter)) return *result;
  switch (message) {
    case WM_PAINT:
      Paint();
      return 0;
    case WM_ERASEBKGND:
      return 1;
    case WM_CTLCOLORSTATIC: {
      const auto dc = reinterpret_cast<HDC>(parameter);
      SetTextColor(dc, GetSysColor(COLOR_WINDOWTEXT));
      SetBkColor(dc, GetSysColor(COLOR_WINDOW));
      return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
    }
    case WM_COMMAND:
      if (HIWORD(parameter) == BN_CLICKED) OnCommand(LOWORD(parameter));
      return 0;
    case WM_CLOSE:
      OnCommand(IDCANCEL);
      return 0;
    default:
      return DefWindowProcW(window_, message, parameter, data);
  }
}

std::optional<LRESULT> ViewWindow::HandleScale(UINT message, WPARAM parameter, LPARAM data) {
  switch (message) {
    case WM_SIZE:
      if (parameter == SIZE_MINIMIZED) return std::nullopt;
      LayOut(ClientSize());
      InvalidateRect(window_, nullptr, TRUE);
      return 0;
    case WM_GETMINMAXINFO: {
      const SIZE outer = GetOuterSize(window_, {Scaled(client_.cx), Scaled(client_.cy)}, dpi_);
      reinterpret_cast<MINMAXINFO*>(data)->ptMinTrackSize = {outer.cx * 3 / 4, outer.cy * 3 / 4};
      return 0;
    }
    case kGetDpiScaledSize: {
      const auto dpi = static_cast<int>(parameter);
      *reinterpret_cast<SIZE*>(data) = GetOuterSize(window_, ClientAt(dpi), dpi);
      return TRUE;
    }
    case WM_DPICHANGED: {
      const SIZE client = ClientAt(HIWORD(parameter));
      SetScale(HIWORD(parameter));
      const RECT& place = *reinterpret_cast<const RECT*>(data);
      SetWindowPos(window_, nullptr, place.left, place.top, place.right - place.left,
                   place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
      FitClient(client);
      LayOut(ClientSize());
      RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
      return 0;
    }
    case WM_SETTINGCHANGE:
      SetScale(dpi_);
      LayOut(ClientSize());
      InvalidateRect(window_, nullptr, TRUE);
      return 0;
    default:
      return std::nullopt;
  }
}

std::optional<LRESULT> ViewWindow::HandleFocus(UINT message, WPARAM parameter) {
  switch (message) {
    case WM_ACTIVATE:
      if (LOWORD(parameter) == WA_INACTIVE) {
        const HWND focus = GetFocus();
        if (IsChild(window_, focus) != FALSE) focus_ = focus;
      }
      return std::nullopt;
    case WM_SETFOCUS:
      if (IsWindowEnabled(focus_) != FALSE && IsWindowVisible(focus_) != FALSE) SetFocus(focus_);
      return 0;
    case DM_GETDEFID: {
      const HWND button = GetDlgItem(window_, DefaultButton());
      return IsWindowEnabled(button) == FALSE ? 0 : MAKELRESULT(DefaultButton(), DC_HASDEFID);
    }
    default:
      return std::nullopt;
  }
}

void ViewWindow::Paint() {
  PAINTSTRUCT record{};
  const HDC dc = BeginPaint(window_, &record);
  const SIZE client = ClientSize();
  const int footer_top = client.cy - FooterHeight();
  const RECT page{0, 0, client.cx, footer_top};
  const RECT line{0, footer_top, client.cx, footer_top + std::max(1, Scaled(1))};
  const RECT footer{0, line.bottom, client.cx, client.cy};
  FillRect(dc, &page, GetSysColorBrush(COLOR_WINDOW));
  FillRect(dc, &line, GetSysColorBrush(COLOR_3DLIGHT));
  FillRect(dc, &footer, GetSysColorBrush(COLOR_BTNFACE));
  Draw(dc);
  EndPaint(window_, &record);
}

void SetControlText(HWND control, const std::string& text) {
  const std::wstring wide = ToWide(text);
  std::wstring shown(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
  shown.resize(static_cast<std::size_t>(
      GetWindowTextW(control, shown.data(), static_cast<int>(shown.size()))));
  if (shown != wide) SetWindowTextW(control, wide.c_str());
}

}  // namespace platform
