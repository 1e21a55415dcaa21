#pragma once

#include <memory>
#include <string>

#include "ports/named_mutex.h"

// Single-instance control (module miMutexes).
namespace tmw {

// Owner of the updater's mutex; its end frees the mutex, however the object goes.
class MutexKeeper {
 public:
  void SetMutex(std::unique_ptr<ports::NamedMutex> mutex) { mutex_ = std::move(mutex); }

 private:
  std::unique_ptr<ports::NamedMutex> mutex_;
};

// Waits, with the user's consent, until nobody holds the mutex. False when the user gave up. A
// mutex that cannot be probed counts as held.
bool WaitUntilAppMutexClosed(const std::string& mutex_name, const std::string& app_title);

// Takes the updater's mutex and keeps it until ReleaseUpdaterLock or the end of the process. False
// when the user does not want to wait for other copies; raises when the mutex cannot be created.
bool LockUpdaterMutex(const std::string& mutex_name);

// Frees the updater's mutex; nothing happens when it is not held.
void ReleaseUpdaterLock();

}  // namespace tmw
