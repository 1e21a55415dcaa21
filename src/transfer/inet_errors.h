#pragma once

#include <string>

#include "ports/outcome.h"

// Failures of the internet layer in words.
namespace tmw {

// The message, if any, on a line of its own, then the code's text, which is looked up first among
// the internet layer's texts, then among the system's.
std::string GetInetErrorText(ports::SystemCode code, const std::string& message);

// Throws kProgramErrorNumber (not the code) with that text.
[[noreturn]] void RaiseInetError(ports::SystemCode code, const std::string& message);

}  // namespace tmw
