#pragma once

#include "tools/command_line.h"

namespace jetsql {

// What differs between two databases: structure, relations, and rows by their primary keys (without
// one: rows that the other lacks). The exit code is 1 if anything does.
int Diff(const tools::Arguments& arguments);

}  // namespace jetsql
