#pragma once

#include <string>

#include "ports/error_texts.h"
#include "ports/outcome.h"

// System error texts (module mApiErrors).
namespace tmw {

// Throws a ProgramError with the code as its number and the system's text as its description. Code
// 0 throws kProgramErrorNumber: a call that failed without a code still is a failure.
[[noreturn]] void RaiseApiError(ports::SystemCode code);

// The same with a message, which states the action and its object, on the line above.
[[noreturn]] void RaiseApiErrorWithMessage(const std::string& message, ports::SystemCode code);

// The text of a code: from the first loaded module of the list ("a.dll|b.dll") that knows it, else
// from the system, else a sentence that names the code. Never empty.
std::string GetApiErrorText(ports::SystemCode code, const std::string& modules);

// As the system gives it, with its trailing line break; empty when there is none. Module 0: system.
std::string FormatSystemMessage(ports::SystemCode code, ports::ErrorTexts::Module module);

// What a code-less failure reads like.
inline constexpr const char* kUnknownApiError = "Unknown API error.";

}  // namespace tmw
