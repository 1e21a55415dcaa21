#pragma once

#include "tools/command_line.h"

namespace jetsql {

// The structure, readable or as statements.
int Schema(const tools::Arguments& arguments);

// Structure and rows as statements that the command run makes an equal database of.
int Dump(const tools::Arguments& arguments);

}  // namespace jetsql
