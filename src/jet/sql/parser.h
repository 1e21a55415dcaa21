#pragma once

#include <string_view>

#include "jet/sql/ast.h"

namespace jet::sql {

// One statement and an optional ";". Fails with the number of the clause that is wrong, with 3129
// if it is not a statement, 3142 for text after the end, 3251 for a statement of Jet that is not
// supported.
Statement ParseStatement(std::string_view text);

// An expression on its own, such as a field's default.
ExpressionPtr ParseExpression(std::string_view text);

}  // namespace jet::sql
