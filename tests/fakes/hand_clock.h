#pragma once

#include <functional>
#include <vector>

#include "ports/clock.h"

namespace tests {

// A clock cranked by hand: a sleep advances it and is recorded, nothing waits.
class HandClock final : public ports::Clock {
 public:
  std::vector<std::int32_t> sleeps;
  std::int64_t now = 0;
  std::int64_t step = 0;             // each reading advances the clock
  std::int64_t utc = 1'795'348'800;  // 2026-11-22, noon
  std::function<void()> on_sleep;

  void Sleep(std::int32_t milliseconds) override {
    sleeps.push_back(milliseconds);
    now += milliseconds;
    if (on_sleep) on_sleep();
  }

  std::int64_t TickCount() override { return now += step; }

  std::int64_t UtcSeconds() override { return utc; }
};

}  // namespace tests
