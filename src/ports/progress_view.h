#pragma once

#include <string>

namespace ports {

// What the user does in the progress window. Called only from within Run and RunPendingEvents (and
// from other waits of the front end that process events), on the updater's one thread.
class ProgressViewEvents {
 public:
  virtual ~ProgressViewEvents() = default;

  // Called once, when the window is on the screen: the work starts here.
  virtual void OnShown() = 0;

  // The button, the close box, Esc, or the first Ctrl+C in a terminal. Called whatever the button's
  // state; the listener decides.
  virtual void OnCancel() = 0;

  // The user insists: the second Ctrl+C in a terminal, closing the terminal, or the system's
  // request to end. Called whatever the button's state.
  virtual void OnStop() = 0;
};

// The detail line stands below the bar; without a bar it moves up.
enum class BarKind {
  kNone,
  kBar,             // over the whole width
  kBarWithCounter,  // a shorter bar, the counter beside it
  kCounter,         // the counter alone, where it stands beside a bar
};

constexpr bool HasBar(BarKind kind) {
  return kind == BarKind::kBar || kind == BarKind::kBarWithCounter;
}
constexpr bool HasCounter(BarKind kind) {
  return kind == BarKind::kCounter || kind == BarKind::kBarWithCounter;
}

// What stands beside the stage, the detail and the counter; empty parts are not shown.
struct ProgressNotes {
  std::string step;       // of the whole run
  std::string component;  // being worked on
  std::string unit;       // of the counter, shown with it

  bool operator==(const ProgressNotes&) const = default;
};

// The progress window. What it shows and what a press of its button means is decided above it.
// Texts are UTF-8. SetStage, SetDetail, SetPicture, ShowBar, SetNotes and SetButton paint before
// they return, without processing events; before Run they take effect when the window appears.
class ProgressView {
 public:
  virtual ~ProgressView() = default;

  virtual void SetCaption(const std::string& text) = 0;
  virtual void SetStage(const std::string& text) = 0;
  virtual void SetDetail(const std::string& text) = 0;

  // "download", "scan", "dbnew", "dbgear", "trash", "install" or "brush"; empty: no picture.
  virtual void SetPicture(const std::string& name) = 0;

  // Bar and counter keep their values, visible or not.
  virtual void ShowBar(BarKind kind) = 0;

  // The bar's value, 0 to 100, and the counter's text. Called about as often as a user can see.
  virtual void SetProgress(double percent, const std::string& counter) = 0;

  // Speed and time left in words; empty if unknown. A view without room for it omits it.
  virtual void SetPace(const std::string& text) = 0;

  virtual void SetNotes(const ProgressNotes& notes) = 0;

  virtual void SetButton(const std::string& caption, bool is_enabled) = 0;

  // Modal: shows the window, raises OnShown, returns when Close has been called. The listener
  // outlives the call.
  virtual void Run(ProgressViewEvents& events) = 0;

  virtual void Close() = 0;
};

}  // namespace ports
