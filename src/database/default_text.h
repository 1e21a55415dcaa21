#pragma once

#include <string>

#include "ports/database_types.h"

namespace tmw {

// The expression that a field definition holds for a default value: a text is one already, other
// kinds become literals ("2.5", "#01/31/2003#", "True"). Empty for Null and Empty.
std::string DefaultText(const ports::DatabaseValue& value);

}  // namespace tmw
