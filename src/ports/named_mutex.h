#pragma once

#include <memory>
#include <string>

#include "ports/outcome.h"

namespace ports {

// An open named mutex. Destroying it releases the mutex, if it is owned, and closes it; the name
// disappears with its last holder, however that process ends.
class NamedMutex {
 public:
  virtual ~NamedMutex() = default;
};

struct CreatedMutex {
  std::unique_ptr<NamedMutex> mutex;
  bool already_existed = false;  // another process holds a mutex of that name
};

// Mutexes between processes of one user, found by name ("Local\\Tamrin_Mutex").
// Windows: CreateMutexA. Linux: an advisory lock (flock) on "<name>.lock" in a folder of the user's
// (docs/locks.md), so that a shell script can hold it with flock(1).
class NamedMutexes {
 public:
  virtual ~NamedMutexes() = default;

  // Makes the place where the mutexes lie, if the system has none of its own for them.
  virtual Status Prepare() = 0;

  // That place, for messages; empty if it is the system's own.
  virtual std::string Place() const = 0;

  // Creates the mutex or opens the existing one.
  virtual Outcome<CreatedMutex> Create(const std::string& name, bool initial_owner) = 0;
};

}  // namespace ports
