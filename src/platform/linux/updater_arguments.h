#pragma once

namespace platform {

// The variables that name the files of settings instead of the usual ones.
inline constexpr const char* kMachineFileVariable = "TAMRIN_MACHINE_REG";
inline constexpr const char* kUserFileVariable = "TAMRIN_USER_REG";

// Replaces a relative program behind "-e", and relative files in the variables, by absolute paths:
// the updater's copies run in another folder.
void MakePathsAbsolute(int argc, char** argv);

}  // namespace platform
