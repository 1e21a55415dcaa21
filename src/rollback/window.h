#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "ports/progress_view.h"
#include "services/updater_events.h"

namespace rollback {

// The window in which the work is done: stage, detail and bar. The work can be cancelled until it
// sets the button mode 0.
class Window final : public tmw::UpdaterEvents, private ports::ProgressViewEvents {
 public:
  Window();

  // Modal: shows the window, does the work and closes it. An error of the work is raised here.
  void Run(std::function<void()> work);

  void OnSetMainAction(const std::string& text) override;
  void OnSetupProgress(std::int32_t max, bool show_count) override;
  void OnSetProgress(std::int32_t value) override;
  void OnSetSubAction(const std::string& text) override;
  void OnSetButtonMode(std::int32_t mode) override;
  void OnSetIcon(const std::string& name) override;
  void OnCheckCancelPressed(bool& cancel) override;

 private:
  void OnShown() override;
  void OnCancel() override;
  void OnStop() override { OnCancel(); }

  std::unique_ptr<ports::ProgressView> view_;
  std::function<void()> work_;
  std::exception_ptr failure_;
  std::int32_t max_ = 0;
  bool may_cancel_ = true;
  bool is_cancelled_ = false;
};

}  // namespace rollback
