#pragma once

#include <memory>
#include <string>

#include "companion/abi.h"
#include "platform/outcome.h"

namespace platform {

// The companion library UnTmz. It lies in the program's own folder ("UnTmz.dll", "UnTmz.so") and is
// loaded at the first use, never at the program's start: a loaded library could not be replaced.
class CompanionLibrary {
 public:
  virtual ~CompanionLibrary() = default;

  // The table of entry points, the same at every call; it lives as long as this object. A failure
  // (no such file, no library, an entry point missing) is tried again by the next call.
  virtual Outcome<const companion::EntryPoints*> Load() = 0;

  // The file that Load takes.
  virtual std::string Path() const = 0;

  // The last system error. To be read alone, on the line after the failing call.
  virtual SystemCode LastError() const = 0;
};

// Empty: the library in the program's own folder.
std::unique_ptr<CompanionLibrary> MakeCompanionLibrary(const std::string& path = {});

}  // namespace platform
