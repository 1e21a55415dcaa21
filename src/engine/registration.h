#pragma once

#include <string>

// Registering components with the system, and the reverse: through the system's tool, else through
// the companion library.
namespace tmw {

// Success, or a file that the maker's own setting keeps unregistered, is true. A missing file and a
// failure are false, told to the user unless quiet.
bool DoRegisterDll(const std::string& file, bool is_quiet);
bool UnregisterDll(const std::string& file, bool is_quiet);

// The registration tool's path, looked for once per process; empty when there is none (always on
// Linux).
std::string GetRegSvr32FileName();

// Empty where the system has no such folders.
std::string GetWindowsFolder();
std::string GetSystemFolder();

}  // namespace tmw
