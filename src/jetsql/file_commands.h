#pragma once

#include "tools/command_line.h"

namespace jetsql {

// Commands about the file itself. They read it without the database engine, whichever that is, and
// while others may read it too.

// What the file is and what it holds.
int Info(const tools::Arguments& arguments);

// Checks the file from its first page to its last and prints every kind of finding; the exit code
// is that of a failure when there is a fault.
int Check(const tools::Arguments& arguments);

// Copies what a damaged file still yields into a new one and lists what was lost; the exit code is
// that of a failure when anything was.
int Recover(const tools::Arguments& arguments);

}  // namespace jetsql
