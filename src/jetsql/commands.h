#pragma once

#include "tools/program.h"

namespace jetsql {

// The program jetsql: its commands and what they print.
tools::Program MakeProgram();

}  // namespace jetsql
