#pragma once

#include <string>
#include <vector>

#include "jet/file/database_reader.h"

namespace tests {

// The rows of a table as compact JSON arrays in field order, sorted as texts. Numbers that JSON
// would round are texts: decimals and currency with a point and without trailing zeros ("12."),
// dates "YYYY-MM-DDTHH:MM:SS", bytes "x" and their hexadecimal digits, GUIDs without braces.
std::vector<std::string> CanonicalRows(jet::file::DatabaseReader& reader,
                                       const jet::file::TableLayout& table);

// SHA-256 of the rows with line feeds between them, in lower-case hexadecimal.
std::string DigestOf(const std::vector<std::string>& rows);

}  // namespace tests
