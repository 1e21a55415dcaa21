#include "platform/windows/input_box.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "platform/windows/windows_texts.h"

namespace platform {
namespace {

constexpr std::size_t kMaxLine = 1024;

// Dialog units.
constexpr short kWidth = 240;
constexpr short kMargin = 7;
constexpr short kTextLine = 8;
constexpr short kButtonWidth = 50;
constexpr short kButtonHeight = 14;

// Class atoms of a dialog template.
constexpr WORD kButtonClass = 0x0080;
constexpr WORD kEditClass = 0x0081;
constexpr WORD kStaticClass = 0x0082;

struct Place {
  short x;
  short y;
  short width;
  short height;
};

// A dialog template in memory: DLGTEMPLATE, title and font, then DLGITEMTEMPLATEs, each on a
// boundary of four bytes.
class DialogTemplate {
 public:
  DialogTemplate(const std::wstring& title, short width, short height) {
    DLGTEMPLATE head{};
    head.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_CENTER | DS_SETFOREGROUND |
                 DS_SETFONT | DS_FIXEDSYS;
    head.cx = width;
    head.cy = height;
    Add(head);
    Add(DWORD{0});  // no menu, the dialog class
    AddText(title);
    Add(WORD{8});
    AddText(L"MS Shell Dlg");
  }

  void AddItem(WORD window_class, DWORD style, int id, const Place& place,
               const std::wstring& text) {
    bytes_.resize((bytes_.size() + 3) / 4 * 4);
    DLGITEMTEMPLATE item{};
    item.style = style | WS_CHILD | WS_VISIBLE;
    item.x = place.x;
    item.y = place.y;
    item.cx = place.width;
    item.cy = place.height;
    item.id = static_cast<WORD>(id);
    Add(item);
    Add(WORD{0xFFFF});
    Add(window_class);
    AddText(text);
    Add(WORD{0});  // no creation data
    std::memcpy(bytes_.data() + offsetof(DLGTEMPLATE, cdit), &++count_, sizeof(count_));
  }

  const DLGTEMPLATE* Get() const { return reinterpret_cast<const DLGTEMPLATE*>(bytes_.data()); }

 private:
  template <typename T>
  void Add(const T& record) {
    const auto* const data = reinterpret_cast<const char*>(&record);
    bytes_.insert(bytes_.end(), data, data + sizeof(record));
  }

  void AddText(const std::wstring& text) {
    const auto* const data = reinterpret_cast<const char*>(text.c_str());
    bytes_.insert(bytes_.end(), data, data + (text.size() + 1) * sizeof(wchar_t));
  }

  std::vector<char> bytes_;
  WORD count_ = 0;
};

// A rough measure: about 55 characters of the font fit the width.
short CountLines(const std::wstring& text) {
  std::size_t lines = 1;
  std::size_t length = 0;
  for (const wchar_t c : text) {
    const bool is_break = c == L'\n' || ++length > 55;
    if (is_break) {
      ++lines;
      length = 0;
    }
  }
  return static_cast<short>(std::min<std::size_t>(lines, 30));
}

INT_PTR CALLBACK RunBox(HWND box, UINT message, WPARAM parameter, LPARAM data) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(box, DWLP_USER, data);
    SendDlgItemMessageW(box, kInputBoxLineId, EM_LIMITTEXT, kMaxLine, 0);
    return TRUE;  // the focus goes to the first control that takes it
  }
  if (message != WM_COMMAND) return FALSE;
  const int id = LOWORD(parameter);
  if (id != IDOK && id != IDCANCEL) return FALSE;
  if (id == IDOK) {
    wchar_t line[kMaxLine + 1] = {};
    const UINT length = GetDlgItemTextW(box, kInputBoxLineId, line, kMaxLine + 1);
    *reinterpret_cast<std::wstring*>(GetWindowLongPtrW(box, DWLP_USER)) = {line, length};
  }
  EndDialog(box, id);
  return TRUE;
}

}  // namespace

std::optional<std::string> ShowInputBox(HWND owner, const std::string& title,
                                        const std::string& prompt, bool is_secret) {
  const std::wstring text = ToWide(prompt);
  const auto text_height = static_cast<short>(CountLines(text) * kTextLine);
  const auto line_top = static_cast<short>(kMargin + text_height + 4);
  const auto buttons_top = static_cast<short>(line_top + kButtonHeight + kMargin);
  constexpr short kInside = kWidth - 2 * kMargin;
  constexpr short kCancelLeft = kWidth - kMargin - kButtonWidth;
  constexpr short kOkLeft = kCancelLeft - 4 - kButtonWidth;

  DialogTemplate box(ToWide(title), kWidth,
                     static_cast<short>(buttons_top + kButtonHeight + kMargin));
  box.AddItem(kStaticClass, SS_LEFT | SS_NOPREFIX, kInputBoxPromptId,
              {kMargin, kMargin, kInside, text_height}, text);
  const DWORD secret = is_secret ? ES_PASSWORD : 0;
  box.AddItem(kEditClass, WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL | secret, kInputBoxLineId,
              {kMargin, line_top, kInside, kButtonHeight}, L"");
  box.AddItem(kButtonClass, WS_TABSTOP | BS_DEFPUSHBUTTON, IDOK,
              {kOkLeft, buttons_top, kButtonWidth, kButtonHeight}, windows_texts::kOk);
  box.AddItem(kButtonClass, WS_TABSTOP | BS_PUSHBUTTON, IDCANCEL,
              {kCancelLeft, buttons_top, kButtonWidth, kButtonHeight}, windows_texts::kCancel);

  std::wstring answer;
  const INT_PTR button = DialogBoxIndirectParamW(GetModuleHandleW(nullptr), box.Get(), owner,
                                                 RunBox, reinterpret_cast<LPARAM>(&answer));
  if (button != IDOK) return std::nullopt;
  return FromWide(answer);
}

}  // namespace platform
