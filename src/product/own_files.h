#pragma once

#include <string>

namespace tmw {

// The name of the companion library's file, which lies beside every program.
std::string CompanionFileName();

// True for the names of the updater's program, its companion library and the program of the way
// back, letter case aside. These files are exchanged in one step: the product's folder always holds
// programs that can finish what was begun.
bool IsOwnFileName(const std::string& name);

}  // namespace tmw
