#pragma once

#include <vector>

#include "ports/database_types.h"

namespace jetsql {

// The order of values in an index of the database: Null first, texts as the database orders them.
// Below, at or above zero.
int CompareValues(const ports::DatabaseValue& a, const ports::DatabaseValue& b);

}  // namespace jetsql
