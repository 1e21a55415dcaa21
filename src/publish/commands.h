#pragma once

#include "tools/program.h"

namespace publish {

// The program tmpublish: its commands and what they print.
tools::Program MakeProgram();

}  // namespace publish
