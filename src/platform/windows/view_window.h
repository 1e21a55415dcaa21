#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/windows/dpi.h"
#include "platform/windows/windows_headers.h"

namespace platform {

class ViewWindow;

// The windows on the screen, in the order of their opening, and the handling of their messages.
// Listeners are called here, after the message, and not within the window procedure: their
// exceptions must not pass through the system's frames.
class OpenWindows {
 public:
  void Add(ViewWindow& window) { windows_.push_back(&window); }
  void Remove(const ViewWindow& window) { std::erase(windows_, &window); }

  // The window that boxes belong to; nullptr when none is open.
  HWND Top() const;

  // Draws attention to a box that is about to open: the window that it belongs to is restored if it
  // is minimised, and its button in the taskbar flashes while the user works elsewhere.
  void CallAttention() const;

  // Handles the pending messages. WM_QUIT is posted again.
  void RunPending();

  // Waits for a message and handles it. Returns false for WM_QUIT, which is posted again.
  bool WaitAndRun();

 private:
  void Dispatch(MSG& message) const;
  void RaiseRequests() const;

  std::vector<ViewWindow*> windows_;
};

// A window that behaves like a dialog (Tab, Enter and Esc, focus kept over a change of windows),
// with the native font, a white page and a footer of buttons, scaled to the screen. Where the
// system cannot create windows every call does nothing.
class ViewWindow {
 public:
  ViewWindow(const ViewWindow&) = delete;
  ViewWindow& operator=(const ViewWindow&) = delete;
  virtual ~ViewWindow();

  HWND Get() const { return window_; }

  // Sees a key before anyone else; returns true if it has handled the key.
  virtual bool TakeKey(const MSG& /*message*/) { return false; }

  // Reports to the listener what the user has requested since the last call.
  virtual void RaiseRequests() = 0;

 protected:
  ViewWindow(OpenWindows& open, DWORD style, SIZE client);

  // A control; its place is given by LayOut.
  HWND AddControl(const wchar_t* window_class, DWORD style, int id, DWORD extended_style = 0);
  HWND AddButton(int id) { return AddControl(L"BUTTON", WS_TABSTOP | BS_PUSHBUTTON, id); }

  // To be called by the constructor of the final class when its controls are there.
  void Prepare();

  // Shows the window over its owner, or in the middle of the screen, and disables the owner for the
  // duration of the scope.
  class Showing {
   public:
    explicit Showing(ViewWindow& view);
    Showing(const Showing&) = delete;
    Showing& operator=(const Showing&) = delete;
    ~Showing();

   private:
    ViewWindow& view_;
    HWND owner_;
  };

  OpenWindows& Open() const { return open_; }
  int Dpi() const { return dpi_; }
  int Scaled(int length) const { return ScaleTo(dpi_, length); }
  HFONT Font() const { return font_.Get(); }

  // Places the controls anew and paints them at once.
  void Arrange();

  // Wakes a loop that waits for a message, so that it calls RaiseRequests.
  void WakeLoop() const { PostMessageW(window_, WM_NULL, 0, 0); }

  // The place of a button in the footer; its width follows its caption.
  int FooterButtonWidth(HWND button) const;
  void PlaceFooterButton(HWND button, int left, SIZE client) const;
  int FooterHeight() const { return Scaled(46); }

  virtual void LayOut(SIZE client) = 0;
  virtual void SetFonts() = 0;         // after a change of the scale
  virtual void Draw(HDC dc) = 0;       // on the white page
  virtual int DefaultButton() = 0;     // what Enter presses when no button has the focus
  virtual void OnCommand(int id) = 0;  // a button; IDCANCEL: Esc or the close box
  virtual std::optional<LRESULT> OnMessage(UINT message, WPARAM parameter, LPARAM data) = 0;

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM parameter, LPARAM data);
  LRESULT Handle(UINT message, WPARAM parameter, LPARAM data);
  std::optional<LRESULT> HandleScale(UINT message, WPARAM parameter, LPARAM data);
  std::optional<LRESULT> HandleFocus(UINT message, WPARAM parameter);
  void SetScale(int dpi);
  void Paint();
  void Place(HWND owner) const;
  SIZE ClientSize() const;
  SIZE ClientAt(int dpi) const;  // what the window shows now, on a screen of that scale

  // Windows before 10 1703 does not scale the frame on a screen of another scale, and the size that
  // it suggests ignores that.
  void FitClient(SIZE wanted) const;

  OpenWindows& open_;
  SIZE client_;  // for 96 dots per inch
  HWND window_ = nullptr;
  HWND focus_ = nullptr;  // the control that gets the focus when the window becomes active
  int dpi_ = USER_DEFAULT_SCREEN_DPI;
  UniqueFont font_;
  UniqueIcon small_icon_;
  UniqueIcon big_icon_;
};

// UTF-8 to a control, and nothing when it shows the text already.
void SetControlText(HWND control, const std::string& text);

}  // namespace platform
