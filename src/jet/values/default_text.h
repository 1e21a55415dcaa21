#pragma once

#include <string>

#include "ports/database_types.h"

namespace jet {

// The expression that a field's default value is kept as: a text is one already, other kinds become
// literals ("2.5", "#01/31/2003#", "True"). Empty for none.
std::string DefaultText(const ports::DatabaseValue& value);

}  // namespace jet
