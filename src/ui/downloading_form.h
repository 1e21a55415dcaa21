#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "ports/progress_view.h"
#include "services/progress_window.h"
#include "services/updater_events.h"
#include "ui/transfer_pace.h"

namespace tmw {

class KsUpdater;

// The window of a run: starts the run once it is on the screen, shows what the run reports, and
// turns a press of its button into the answer that the run asks for. The view only displays.
//
// Stage, detail, picture and button go to the view at once. Bar and counter are painted about as
// often as a person can see, much more rarely than a run reports them; a position that was held
// back is painted with a later check or with the next stage.
class DownloadingForm final : public ProgressWindow,
                              public UpdaterEvents,
                              private ports::ProgressViewEvents {
 public:
  // exit_updater ends this process once the next updater runs; the window is closed first.
  explicit DownloadingForm(std::function<void()> exit_updater);
  ~DownloadingForm() override;

  // Modal, one run per form. A failure of the run is shown, not thrown; Updated is then false.
  void Execute(const std::string& product_code, const std::string& url,
               const std::string& fallback_url) override;

  bool Updated() const override { return updated_; }
  std::string NewVersion() const override { return new_version_; }

  // In an error's frames their names begin with "fUpdater_".
  void OnSetMainAction(const std::string& text) override;
  void OnSetupProgress(std::int32_t max, bool show_count) override;
  void OnSetProgress(std::int32_t value) override;
  void OnSetSubAction(const std::string& text) override;
  void OnSetButtonMode(std::int32_t mode) override;
  void OnSetIcon(const std::string& name) override;
  void OnCheckCancelPressed(bool& cancel) override;

  void OnSetStep(std::int32_t step, std::int32_t count) override;
  void OnSetComponent(const std::string& name) override;

  // Digits grouped by three with blanks, "1 234 567"; empty for zero.
  static std::string FineNumStr(double value);

 private:
  // The events of the view. Errors end in them: no caller handles any.
  void OnShown() override { theTimer_Timer(); }
  void OnCancel() override { theCancel_Click(); }
  void OnStop() override;
  void theTimer_Timer();
  void theCancel_Click();

  void Cancel();
  void Run();
  void ShowUnfinished();
  void PaintNotes(ports::ProgressNotes notes);
  void PaintProgress(std::int64_t now);
  void PaintProgressIfDue();
  void PaintHeldProgress();

  std::function<void()> exit_updater_;
  std::unique_ptr<ports::ProgressView> view_;
  std::unique_ptr<KsUpdater> updater_;  // fUpdater
  std::string product_code_;
  std::string url_;
  std::string fallback_url_;
  bool is_timer_on_ = false;
  bool is_asking_ = false;
  bool cancel_enabled_ = false;
  bool cancel_pressed_ = false;

  std::int32_t progress_max_ = 0;
  std::int32_t progress_value_ = 0;
  bool show_count_ = false;
  std::string max_words_;  // of progress_max_
  ports::ProgressNotes notes_;
  bool is_progress_held_ = false;
  std::int64_t last_painting_ = 0;
  TransferPace pace_;  // used for a range with a counter, which counts bytes

  bool updated_ = false;
  std::string new_version_;
};

}  // namespace tmw
