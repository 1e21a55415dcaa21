#pragma once

#include <memory>
#include <string>

#include "ports/companion_abi.h"
#include "ports/outcome.h"

namespace ports {

// The companion library UnTmz. It lies in the program's own folder ("UnTmz.dll", "UnTmz.so") and is
// loaded at the first use, never at the program's start: a loaded library could not be replaced.
class CompanionLibrary {
 public:
  virtual ~CompanionLibrary() = default;

  // The table of entry points, the same at every call; it lives as long as this object. After a
  // failure (no such file, no library, an entry point missing) the next call tries again.
  virtual Outcome<const EntryPoints*> Load() = 0;

  // The file that Load takes.
  virtual std::string Path() const = 0;

  // A path in the 8-bit form that the entry points take: code page 1251 on Windows, with short
  // names for what it cannot hold; UTF-8 on Linux.
  virtual std::string NarrowPath(const std::string& path) const = 0;

  // The last system error. To be read alone, on the line after the failing call.
  virtual SystemCode LastError() const = 0;
};

}  // namespace ports
