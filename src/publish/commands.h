#pragma once

#include "tools/program.h"

namespace publish {

// Exit codes besides those that all tools share.
inline constexpr int kFaultsFound = 1;
inline constexpr int kFailed = 3;

// The program tmpublish: its commands and what they print.
tools::Program MakeProgram();

}  // namespace publish
