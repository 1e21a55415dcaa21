#pragma once

#include <string>

#include "ports/database.h"

namespace tmw {

// Gives a field a property beside those of its definition, or replaces the one it has.
void SetFieldProp(ports::Database& database, const std::string& table, const std::string& field,
                  const std::string& property, ports::DataType type,
                  const ports::DatabaseValue& value);

}  // namespace tmw
