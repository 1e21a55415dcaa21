#pragma once

#include <string>

#include "ports/error_texts.h"
#include "ports/outcome.h"

// System error texts (module mApiErrors).
namespace tmw {

// Throws a ProgramError with the code as its number and the system's text as its description. Code
// 0 throws kProgramErrorNumber: a call that failed without a code is still a failure.
[[noreturn]] void RaiseApiError(ports::SystemCode code);

// The same with a message, which states the action and its object, on the line above.
[[noreturn]] void RaiseApiErrorWithMessage(const std::string& message, ports::SystemCode code);

// The text of a code: from the first loaded module of the list ("a.dll|b.dll") that knows it, else
// from the system, else a sentence that names the code. Never empty.
std::string GetApiErrorText(ports::SystemCode code, const std::string& modules);

// The text with its trailing line break; empty if there is none. Module 0 is the system itself.
std::string FormatSystemMessage(ports::SystemCode code, ports::ErrorTexts::Module module);

// The text of a failure without a code.
inline constexpr const char* kUnknownApiError = "Unknown API error.";

}  // namespace tmw
