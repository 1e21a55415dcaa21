#include "platform/windows/dpi.h"

#include <cwchar>
// The system's headers come first: this builds on them.
#include <commctrl.h>

namespace platform {
namespace {

// A function that Windows 7 lacks, or that only the newer library of controls has.
template <typename Function>
Function FindFunction(const wchar_t* library, const char* name) {
  const HMODULE module = GetModuleHandleW(library);
  if (module == nullptr) return nullptr;
  // Through void*: the compiler warns about a direct cast.
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

int GetSystemDpi() {
  const HDC screen = GetDC(nullptr);
  const int dpi = screen == nullptr ? 0 : GetDeviceCaps(screen, LOGPIXELSY);
  if (screen != nullptr) ReleaseDC(nullptr, screen);
  return dpi > 0 ? dpi : USER_DEFAULT_SCREEN_DPI;
}

LOGFONTW GetMessageFont(int dpi) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof(metrics);
  using Function = BOOL(WINAPI*)(UINT, UINT, void*, UINT, UINT);
  static const auto ask = FindFunction<Function>(L"user32.dll", "SystemParametersInfoForDpi");
  if (ask != nullptr &&
      ask(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0, static_cast<UINT>(dpi)) != FALSE) {
    return metrics.lfMessageFont;
  }
  if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0) == FALSE) {
    metrics.lfMessageFont.lfHeight = -12;
  }
  metrics.lfMessageFont.lfHeight = MulDiv(metrics.lfMessageFont.lfHeight, dpi, GetSystemDpi());
  return metrics.lfMessageFont;
}

}  // namespace

int GetWindowDpi(HWND window) {
  using Function = UINT(WINAPI*)(HWND);
  static const auto ask = FindFunction<Function>(L"user32.dll", "GetDpiForWindow");
  const UINT dpi = ask == nullptr ? 0 : ask(window);
  return dpi != 0 ? static_cast<int>(dpi) : GetSystemDpi();
}

UniqueFont MakeMessageFont(int dpi, int percent) {
  LOGFONTW font = GetMessageFont(dpi);
  font.lfHeight = MulDiv(font.lfHeight, percent, 100);
  return UniqueFont(CreateFontIndirectW(&font));
}

SIZE GetOuterSize(HWND window, SIZE client, int dpi) {
  RECT outer{0, 0, client.cx, client.cy};
  const auto style = static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE));
  const auto extended = static_cast<DWORD>(GetWindowLongW(window, GWL_EXSTYLE));
  using Function = BOOL(WINAPI*)(RECT*, DWORD, BOOL, DWORD, UINT);
  static const auto adjust = FindFunction<Function>(L"user32.dll", "AdjustWindowRectExForDpi");
  if (adjust == nullptr ||
      adjust(&outer, style, FALSE, extended, static_cast<UINT>(dpi)) == FALSE) {
    AdjustWindowRectEx(&outer, style, FALSE, extended);
  }
  return {outer.right - outer.left, outer.bottom - outer.top};
}

SIZE MeasureText(HWND window, HFONT font, const wchar_t* text) {
  SIZE size{};
  const HDC dc = GetDC(window);
  const HGDIOBJ old = SelectObject(dc, font);
  GetTextExtentPoint32W(dc, text, static_cast<int>(std::wcslen(text)), &size);
  SelectObject(dc, old);
  ReleaseDC(window, dc);
  return size;
}

UniqueIcon LoadPicture(const wchar_t* name, int size) {
  return UniqueIcon(static_cast<HICON>(
      LoadImageW(GetModuleHandleW(nullptr), name, IMAGE_ICON, size, size, LR_DEFAULTCOLOR)));
}

UniqueIcon LoadWarningSign(int size) {
  using Function = HRESULT(WINAPI*)(HINSTANCE, PCWSTR, int, int, HICON*);
  static const auto load = FindFunction<Function>(L"comctl32.dll", "LoadIconWithScaleDown");
  HICON icon = nullptr;
  if (load == nullptr || FAILED(load(nullptr, IDI_WARNING, size, size, &icon))) {
    icon = CopyIcon(LoadIconW(nullptr, IDI_WARNING));
  }
  return UniqueIcon(icon);
}

}  // namespace platform
