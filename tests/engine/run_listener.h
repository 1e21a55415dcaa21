#pragma once

#include <gtest/gtest.h>

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
  std::string steps;  // with the components loaded and the scripts run in them
  std::string cancel_at;
  std::function<void(const std::string& line)> on_line;

  void OnSetMainAction(const std::string& text) override { Add("main " + text); }
  void OnSetupProgress(std::int32_t max, bool show_count) override {
    max_ = max;
    Add("range " + std::to_string(max) + (show_count ? " counted" : ""));
    most_ = max;
  }
  void OnSetProgress(std::int32_t value) override {
    EXPECT_LE(value, max_);
    positions.push_back(value);
  }
  void OnSetSubAction(const std::string& text) override { Add("sub " + text); }
  void OnSetButtonMode(std::int32_t mode) override { Add("mode " + std::to_string(mode)); }
  void OnSetIcon(const std::string& name) override { Add("icon " + name); }
  void OnCheckCancelPressed(bool& cancel) override { cancel = is_cancelled_; }
  void OnSetStep(std::int32_t step, std::int32_t count) override {
    steps += std::to_string(step) + "/" + std::to_string(count) + " ";
  }
  void OnSetComponent(const std::string& name) override { steps += name.empty() ? "" : name + " "; }
  void OnRunScript(const std::string&, const std::string& from, const std::string& to) override {
    steps += from + "-" + to + " ";
  }

  bool Has(const std::string& line) const {
    return std::find(log.begin(), log.end(), line) != log.end();
  }

 private:
  void Add(const std::string& line) {
    log.push_back(line);
    if (line == cancel_at) is_cancelled_ = true;
    if (on_line) on_line(line);
  }

  std::int32_t max_ = 0;
  bool is_cancelled_ = false;
  std::int32_t most_ = 0;
};

}  // namespace tests
