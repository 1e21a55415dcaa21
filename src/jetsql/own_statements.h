#pragma once

#include <string>

#include "ports/database.h"

namespace jetsql {

// Runs one of jetsql's own statements (schema_sql.h). Returns false if the statement is none of
// them; a malformed one is error 3129.
bool RunOwnStatement(ports::Database& database, const std::string& statement);

}  // namespace jetsql
