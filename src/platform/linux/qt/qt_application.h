#pragma once

#include <QApplication>
#include <QDialog>
#include <QIcon>
#include <QString>
#include <memory>
#include <string>
#include <string_view>

namespace platform {

// True when the environment names a display and a window could be opened on it. Tried by a
// short-lived child process, because Qt ends a process that cannot open its display.
bool CanOpenDisplay();

// The window of a run while it is open, as the boxes above it see it.
class OpenWindow {
 public:
  virtual ~OpenWindow() = default;

  virtual QWidget& Widget() = 0;

  // Reports to the listener what the user has done meanwhile.
  virtual void RaiseEvents() = 0;

  // True if the user or the system insists on ending: boxes then close themselves.
  virtual bool IsEndAsked() = 0;

  // Called when a box has been answered: forgets what was pressed before.
  virtual void ForgetPresses() = 0;
};

// Qt in this process. While it exists the process's locale stays as it was before.
class QtApplication {
 public:
  QtApplication();

  // Processes the events of all windows after waiting for the first one, at most for the given
  // time; 0 does not wait.
  static void RunEvents(int milliseconds);

  void SetOpenWindow(OpenWindow* window) { open_window_ = window; }
  void RaiseEvents();

  // Shows a box until it is answered, or closes itself.
  void RunBox(QDialog& box);

  // The window that boxes belong to; null: none is open.
  QWidget* BoxOwner();

  // Draws attention to a box that is about to open: its owner is restored if it is minimised, and
  // marked in the taskbar while the user works elsewhere.
  void CallAttention();
  bool IsEndAsked();

 private:
  int argc_ = 1;  // Qt keeps references to both
  char name_[12] = "TmWebUpdate";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> application_;
  OpenWindow* open_window_ = nullptr;
};

// UTF-8 with CR LF or LF as Qt's text with LF.
QString ToQt(std::string_view text);

// Likewise for the face of a button, where "&" would mark a key.
QString ToButtonText(const std::string& text);

// A picture by its name, in all its sizes.
QIcon PictureNamed(const std::string& name);

}  // namespace platform
