#pragma once

#include <string>

namespace ports {

// What a person does to the window of a run. Raised only from within Run and RunPendingEvents (also
// when other waits of the front end let events run), on the one thread of the updater.
class ProgressViewEvents {
 public:
  virtual ~ProgressViewEvents() = default;

  // Once, when the window is on the screen: the work of the window starts here.
  virtual void OnShown() = 0;

  // The button, the cross, Esc, the first Ctrl+C of a terminal. Raised whatever the button's state:
  // the listener decides.
  virtual void OnCancel() = 0;

  // The person insists without being asked: the second Ctrl+C of a terminal, its closing, or the
  // system's request to end. Raised whatever the button's state.
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

// The window of a run as a front end shows it. It keeps no rules: which texts, when, and what a
// press means is decided above. Texts are UTF-8. SetStage, SetDetail, SetPicture, ShowBar and
// SetButton are painted before they return, without running events; before Run they only take
// effect when the window appears.
class ProgressView {
 public:
  virtual ~ProgressView() = default;

  virtual void SetCaption(const std::string& text) = 0;
  virtual void SetStage(const std::string& text) = 0;
  virtual void SetDetail(const std::string& text) = 0;

  // "download", "scan", "dbnew", "dbgear", "trash", "install" or "brush"; empty: no picture.
  virtual void SetPicture(const std::string& name) = 0;

  // Bar and counter keep their values, whether they are seen or not.
  virtual void ShowBar(BarKind kind) = 0;

  // The bar's value, 0 to 100, and the counter's text. Called as often as a person can see.
  virtual void SetProgress(double percent, const std::string& counter) = 0;

  // Speed and time left in words; empty: not known. A view without room for it leaves it out.
  virtual void SetPace(const std::string& text) = 0;

  virtual void SetButton(const std::string& caption, bool is_enabled) = 0;

  // Modal: shows the window, raises OnShown, returns when Close has been called. The listener
  // outlives the call.
  virtual void Run(ProgressViewEvents& events) = 0;

  virtual void Close() = 0;
};

}  // namespace ports
