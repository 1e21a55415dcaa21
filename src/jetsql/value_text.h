#pragma once

#include <string>

#include "ports/database_types.h"

namespace jetsql {

// As people write it: "Иванов", "2026-01-02 10:20:30", "1234.50", "yes", "0x0102", "NULL". Numbers
// have as many digits as bring the same number back.
std::string PlainText(const ports::DatabaseValue& value);

// A JSON value: numbers, true, false and null, everything else as a string.
std::string JsonText(const ports::DatabaseValue& value);
std::string JsonString(const std::string& text);

// A literal that a statement of the database takes for the same value.
std::string SqlLiteral(const ports::DatabaseValue& value);

}  // namespace jetsql
