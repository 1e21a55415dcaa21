#include "platform/windows/advice_box.h"

#include "platform/windows/clipboard.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_texts.h"
// The system's headers come first: this builds on them.
#include <commctrl.h>

namespace platform {
namespace {

using Function = HRESULT(WINAPI*)(const TASKDIALOGCONFIG*, int*, int*, BOOL*);

// Only the library that the program's manifest asks for has it.
Function FindTaskDialog() {
  const HMODULE module = GetModuleHandleW(L"comctl32.dll");
  if (module == nullptr) return nullptr;
  // Through void*: the compiler warns about a direct cast.
  return reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(module, "TaskDialogIndirect")));
}

// Keeps the box open when its text has been copied; data is the text.
HRESULT CALLBACK OnBoxEvent(HWND box, UINT event, WPARAM button, LPARAM /*data*/,
                            LONG_PTR copied_text) {
  if (event != TDN_BUTTON_CLICKED || button != kAdviceCopyId) return S_OK;
  PutTextOnClipboard(box, *reinterpret_cast<const std::string*>(copied_text));
  return S_FALSE;
}

}  // namespace

bool ShowAdviceBox(HWND owner, ports::MessageKind kind, const std::string& title,
                   const std::string& text, const std::string& advice) {
  static const Function task_dialog = FindTaskDialog();
  if (task_dialog == nullptr) return false;
  const std::wstring wide_title = ToWide(title);
  const std::wstring wide_text = ToWide(text);
  const std::wstring wide_advice = ToWide(advice);
  const std::string copied = title + "\r\n\r\n" + text + "\r\n\r\n" + advice;
  const TASKDIALOG_BUTTON buttons[] = {{kAdviceCopyId, windows_texts::kCopy}};
  const bool is_warning = kind == ports::MessageKind::kWarning;
  TASKDIALOGCONFIG config{};
  config.cbSize = sizeof(config);
  config.hwndParent = owner;
  config.dwFlags = TDF_ALLOW_DIALOG_CANCELLATION | TDF_SIZE_TO_CONTENT;
  if (owner != nullptr) config.dwFlags |= TDF_POSITION_RELATIVE_TO_WINDOW;
  config.dwCommonButtons = TDCBF_OK_BUTTON;
  config.pszWindowTitle = wide_title.c_str();
  config.pszMainIcon = is_warning ? TD_WARNING_ICON : TD_INFORMATION_ICON;
  config.pszContent = wide_text.c_str();
  config.cButtons = 1;
  config.pButtons = buttons;
  config.nDefaultButton = IDOK;
  config.pszFooterIcon = TD_INFORMATION_ICON;
  config.pszFooter = wide_advice.c_str();
  config.pfCallback = OnBoxEvent;
  config.lpCallbackData = reinterpret_cast<LONG_PTR>(&copied);
  return SUCCEEDED(task_dialog(&config, nullptr, nullptr, nullptr));
}

}  // namespace platform
