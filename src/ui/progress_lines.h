#pragma once

#include <functional>
#include <string>

#include "engine/updater_events.h"
#include "startup/services/progress_window.h"

namespace tmw {

// Performs the update run and tells of it in plain lines on the standard output, one a stage. For
// where no window can be shown. The run cannot be stopped half-way by the user.
class ProgressLines final : public ProgressWindow, private UpdaterEvents {
 public:
  // exit_updater ends this process once the next updater runs.
  explicit ProgressLines(std::function<void()> exit_updater)
      : exit_updater_(std::move(exit_updater)) {}

  // A failure of the run is shown, not thrown; Updated is then false.
  void Execute(const std::string& product_code, const std::string& url,
               const std::string& fallback_url) override;

  bool Updated() const override { return updated_; }
  std::string NewVersion() const override { return new_version_; }

 private:
  void OnSetMainAction(const std::string& text) override;
  void OnSetupProgress(std::int32_t /*max*/, bool /*show_count*/) override {}
  void OnSetProgress(std::int32_t /*value*/) override {}
  void OnSetSubAction(const std::string& /*text*/) override {}
  void OnSetButtonMode(std::int32_t /*mode*/) override {}
  void OnSetIcon(const std::string& /*name*/) override {}
  void OnCheckCancelPressed(bool& cancel) override;

  std::function<void()> exit_updater_;
  bool updated_ = false;
  std::string new_version_;
};

}  // namespace tmw
