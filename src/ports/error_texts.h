#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ports/outcome.h"

namespace ports {

// What a code of the system means, as far as users can do something about it.
enum class CodeMeaning { kOther, kNoSpace, kNoRights, kHeld };

// The system's texts for its error codes.
class ErrorTexts {
 public:
  // An already loaded module that brings error texts of its own; 0 is the system itself.
  using Module = std::uintptr_t;

  virtual ~ErrorTexts() = default;

  // The module of that name ("wininet.dll") if it is loaded; nothing otherwise. On Linux the names
  // of the text tables that stand in for the Windows modules.
  virtual std::optional<Module> FindLoadedModule(const std::string& name) = 0;

  // The text as the system gives it, its trailing line break included; empty when there is none.
  virtual std::string Format(SystemCode code, Module module) = 0;

  // kHeld: another program keeps the file open.
  virtual CodeMeaning MeaningOf(SystemCode code) const = 0;
};

}  // namespace ports
