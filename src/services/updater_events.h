#pragma once

#include <cstdint>
#include <string>

namespace tmw {

// What an update run reports and asks while it works; the progress window listens. All events are
// raised synchronously, on the run's thread.
class UpdaterEvents {
 public:
  virtual ~UpdaterEvents() = default;

  // The stage under way; empty takes the line away, as with OnSetSubAction.
  virtual void OnSetMainAction(const std::string& text) = 0;

  // Starts a range of 0 to max; max 0: no bar. show_count asks for a counter "value/max".
  virtual void OnSetupProgress(std::int32_t max, bool show_count) = 0;

  virtual void OnSetProgress(std::int32_t value) = 0;

  // A detail of the stage.
  virtual void OnSetSubAction(const std::string& text) = 0;

  // 0: "Отмена", disabled; 1: "Отмена"; 2: "Закрыть".
  virtual void OnSetButtonMode(std::int32_t mode) = 0;

  // "download", "scan", "dbnew", "dbgear", "trash", "install", "brush" or "".
  virtual void OnSetIcon(const std::string& name) = 0;

  // Lets pending events run; sets cancel once the user has confirmed that they want to stop.
  virtual void OnCheckCancelPressed(bool& cancel) = 0;

  // The step of the run under way, from 1 to count.
  virtual void OnSetStep(std::int32_t /*step*/, std::int32_t /*count*/) {}

  // What the stage works on by its name alone; empty: nothing in particular.
  virtual void OnSetComponent(const std::string& /*name*/) {}

  // The database update script that runs from here on: its file, and the versions it leads from and
  // to.
  virtual void OnRunScript(const std::string& /*file*/, const std::string& /*from*/,
                           const std::string& /*to*/) {}

  // The answer of OnCheckCancelPressed.
  bool CancelPressed();

  // Takes both texts and the bar away.
  void ClearProgress();
};

// For runs that nobody watches, and for those who watch a part only.
class SilentEvents : public UpdaterEvents {
 public:
  void OnSetMainAction(const std::string& /*text*/) override {}
  void OnSetupProgress(std::int32_t /*max*/, bool /*show_count*/) override {}
  void OnSetProgress(std::int32_t /*value*/) override {}
  void OnSetSubAction(const std::string& /*text*/) override {}
  void OnSetButtonMode(std::int32_t /*mode*/) override {}
  void OnSetIcon(const std::string& /*name*/) override {}
  void OnCheckCancelPressed(bool& /*cancel*/) override {}
};

}  // namespace tmw
