#pragma once

#include <string>

// Registers components with the system and unregisters them: by the system's tool or, if that is
// missing or fails, by the companion library.
namespace tmw {

// Return false if the file is missing or the call fails, which is reported unless is_quiet. With
// the maker's setting "NoRegistering" nothing is called and the result is true.
bool DoRegisterDll(const std::string& file, bool is_quiet);
bool UnregisterDll(const std::string& file, bool is_quiet);

// Registers without a report. Returns false with the reason.
[[nodiscard]] bool TryRegisterDll(const std::string& file, std::string& reason);

// The maker's setting that keeps components unregistered; read once per process.
bool GetNoRegisteringParam();

// The path of the registration tool, looked for once per process; empty if there is none, as on
// Linux.
std::string GetRegSvr32FileName();

// Empty where the system has no such folders.
std::string GetWindowsFolder();
std::string GetSystemFolder();

}  // namespace tmw
