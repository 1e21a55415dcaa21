#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "services/updater_events.h"

namespace tests {

// Writes down what a run reports, as "name value"; cancels at the line cancel_at.
class RunListener final : public tmw::UpdaterEvents {
 public:
  std::vector<std::string> log;
  std::vector<std::int32_t> positions;
  std::string cancel_at;
  std::function<void(const std::string& line)> on_line;

  void OnSetMainAction(const std::string& text) override { Add("main " + text); }
  void OnSetupProgress(std::int32_t max, bool show_count) override {
    Add("range " + std::to_string(max) + (show_count ? " counted" : ""));
  }
  void OnSetProgress(std::int32_t value) override { positions.push_back(value); }
  void OnSetSubAction(const std::string& text) override { Add("sub " + text); }
  void OnSetButtonMode(std::int32_t mode) override { Add("mode " + std::to_string(mode)); }
  void OnSetIcon(const std::string& name) override { Add("icon " + name); }
  void OnCheckCancelPressed(bool& cancel) override { cancel = is_cancelled_; }

  bool Has(const std::string& line) const {
    return std::find(log.begin(), log.end(), line) != log.end();
  }

 private:
  void Add(const std::string& line) {
    log.push_back(line);
    if (line == cancel_at) is_cancelled_ = true;
    if (on_line) on_line(line);
  }

  bool is_cancelled_ = false;
};

}  // namespace tests
