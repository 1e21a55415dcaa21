#pragma once

#include <cstdint>
#include <string>

namespace tmw {

// What a run tells and asks while it works; the progress window listens. Raised synchronously.
class UpdaterEvents {
 public:
  virtual ~UpdaterEvents() = default;

  virtual void OnSetMainAction(const std::string& text) = 0;

  // Starts a range of 0 to max; max 0: no bar. show_count asks for a counter "value/max".
  virtual void OnSetupProgress(std::int32_t max, bool show_count) = 0;

  virtual void OnSetProgress(std::int32_t value) = 0;

  virtual void OnSetSubAction(const std::string& text) = 0;

  // 0: "Отмена", disabled; 1: "Отмена"; 2: "Закрыть".
  virtual void OnSetButtonMode(std::int32_t mode) = 0;

  // "download", "scan", "dbnew", "dbgear", "trash", "install", "brush" or "".
  virtual void OnSetIcon(const std::string& name) = 0;

  // Lets pending events run; sets cancel when the user has confirmed that he wants to stop.
  virtual void OnCheckCancelPressed(bool& cancel) = 0;
};

}  // namespace tmw
