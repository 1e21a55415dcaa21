#pragma once

#include <memory>
#include <string>

#include "ports/named_mutex.h"

// Single-instance control (module miMutexes).
namespace tmw {

// Owns the updater's mutex and frees it when destroyed.
class MutexKeeper {
 public:
  void SetMutex(std::unique_ptr<ports::NamedMutex> mutex) { mutex_ = std::move(mutex); }

 private:
  std::unique_ptr<ports::NamedMutex> mutex_;
};

// What is asked while others hold what a program needs.
struct WaitingTexts {
  const char* Title;
  std::string (*ApplicationIsOpen)(const std::string& title);
  std::string (*SeveralCopies)();
};
extern const WaitingTexts kUpdaterWaits;

// Waits, with the user's consent, until no process holds the mutex. Returns false if the user gives
// up. A mutex that cannot be probed counts as held; a place for mutexes that cannot be made is an
// error.
bool WaitUntilAppMutexClosed(const std::string& mutex_name, const std::string& app_title,
                             const WaitingTexts& texts = kUpdaterWaits);

// Takes the updater's mutex and keeps it until ReleaseUpdaterLock or the end of the process.
// Returns false if the user does not want to wait for other copies; raises an error if the mutex
// cannot be created.
bool LockUpdaterMutex(const std::string& mutex_name, const WaitingTexts& texts = kUpdaterWaits);

// The same between users, who do not see each other's mutexes: locks a file in the product's root
// folder, until ReleaseUpdaterLock too. Where this user may not make the file they cannot change
// the product either, and there is no lock.
bool LockProductFolder(const std::string& root, const WaitingTexts& texts = kUpdaterWaits);

// Frees the updater's mutex and the product's folder if they are held.
void ReleaseUpdaterLock();

}  // namespace tmw
