#pragma once

#include <memory>
#include <string>

namespace ports {

// Keeps the machine awake while it lives.
class StayAwake {
 public:
  virtual ~StayAwake() = default;
};

// Sleep and shutdown of the machine.
class Power {
 public:
  virtual ~Power() = default;

  // Asks the system to neither sleep nor shut down until the result is destroyed or the process
  // ends, however it ends; who and why are shown to users who want either. Null where the system
  // cannot be asked or refuses. Windows: sleep alone; a window of the run keeps shutdown off.
  virtual std::unique_ptr<StayAwake> KeepAwake(const std::string& who, const std::string& why) = 0;
};

}  // namespace ports
