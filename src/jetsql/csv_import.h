#pragma once

#include <cstdint>
#include <string>

#include "ports/database.h"
#include "tools/command_line.h"

namespace jetsql {

// Adds the rows of a CSV file to a table; the first line names the fields. With --create the table
// is made, its types by all values of each column. Returns the number of rows.
std::uint64_t ImportCsv(const std::string& path, const tools::Arguments& arguments,
                        ports::Database& database);

}  // namespace jetsql
