#pragma once

#include <string>

#include "platform/database.h"

namespace tmw {

// Gives a field a property beside those of its definition, or replaces the one it has.
void SetFieldProp(platform::Database& database, const std::string& table, const std::string& field,
                  const std::string& property, platform::DataType type,
                  const platform::DatabaseValue& value);

}  // namespace tmw
