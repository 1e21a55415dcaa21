#pragma once

#include "ports/internet.h"

namespace tmw {

// A transfer whose connection cannot be made or breaks off is tried three times, with pauses; any
// other failure is final.
class Attempts {
 public:
  // may_wait is called about ten times a second during a pause; if it returns false, there is no
  // further attempt. May be empty: pending events are processed then.
  explicit Attempts(ports::WaitHandler may_wait);

  // To be called after a failed attempt. Waits and returns true if there is to be another one.
  bool MayTryAgain(bool is_broken_off);

 private:
  ports::WaitHandler may_wait_;
  int made_ = 0;
};

// Whether the code means a connection that could not be made or that broke off.
bool MeansBrokenOff(ports::SystemCode code);

}  // namespace tmw
