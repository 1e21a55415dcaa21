#pragma once

#include "tools/command_line.h"

namespace jetsql {

// A table's rows into a file or to standard output.
int Export(const tools::Arguments& arguments);

// Table texts, or rows of a CSV file.
int Import(const tools::Arguments& arguments);

}  // namespace jetsql
