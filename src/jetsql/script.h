#pragma once

#include "tools/command_line.h"

namespace jetsql {

// Runs a script: all of it in one transaction or, with --continue, each statement by itself.
int Run(const tools::Arguments& arguments);

}  // namespace jetsql
