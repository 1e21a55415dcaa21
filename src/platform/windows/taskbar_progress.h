#pragma once

#include <optional>

#include "platform/windows/com.h"

struct ITaskbarList3;

namespace platform {

// The bar on a window's button in the taskbar. Where the system has none, nothing happens.
class TaskbarProgress {
 public:
  // A window must not be shown before its TaskbarProgress exists: the shell announces the button
  // only once.
  explicit TaskbarProgress(HWND window);
  TaskbarProgress(const TaskbarProgress&) = delete;
  TaskbarProgress& operator=(const TaskbarProgress&) = delete;
  ~TaskbarProgress();

  // To be given every message of the window; returns true for the shell's.
  bool TakeMessage(UINT message);

  // 0 to 100; nothing hides the bar.
  void Set(std::optional<int> percent);

 private:
  void Apply();

  HWND window_;
  UINT button_created_;
  ComScope com_;
  ComPointer<ITaskbarList3> list_;
  std::optional<int> percent_;
};

}  // namespace platform
