#include "platform/windows/taskbar_progress.h"

// The system's headers come first: this builds on them.
#include <shobjidl.h>

namespace platform {

TaskbarProgress::TaskbarProgress(HWND window)
    : window_(window), button_created_(RegisterWindowMessageW(L"TaskbarButtonCreated")) {
  // Without this an elevated window does not receive the shell's message.
  ChangeWindowMessageFilterEx(window, button_created_, MSGFLT_ALLOW, nullptr);
}

TaskbarProgress::~TaskbarProgress() = default;

bool TaskbarProgress::TakeMessage(UINT message) {
  if (message != button_created_ || button_created_ == 0) return false;
  void** const out = reinterpret_cast<void**>(list_.Out());
  if (FAILED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3,
                              out)) ||
      FAILED(list_->HrInit())) {
    list_ = {};
  }
  Apply();
  return true;
}

void TaskbarProgress::Set(std::optional<int> percent) {
  if (percent == percent_) return;  // each change is a call into another process
  percent_ = percent;
  Apply();
}

void TaskbarProgress::Apply() {
  if (!list_) return;
  if (percent_) {
    list_->SetProgressValue(window_, static_cast<ULONGLONG>(*percent_), 100);
  } else {
    list_->SetProgressState(window_, TBPF_NOPROGRESS);
  }
}

}  // namespace platform
