#pragma once

#include <vector>

#include "platform/clock.h"

namespace tests {

// A clock cranked by hand: a sleep moves it and is written down, nothing waits.
class HandClock final : public platform::Clock {
 public:
  std::vector<std::int32_t> sleeps;
  std::int64_t now = 0;

  void Sleep(std::int32_t milliseconds) override {
    sleeps.push_back(milliseconds);
    now += milliseconds;
  }

  std::int64_t TickCount() override { return now; }
};

}  // namespace tests
