#pragma once

#include <string_view>

#include "jet/sql/ast.h"

namespace jet::sql {

// One statement, an optional ";" behind it. Fails with the number of the clause that is wrong, 3129
// for what is no statement at all, 3142 for text behind the end, 3251 for a statement that exists
// in Jet but is not served.
Statement ParseStatement(std::string_view text);

// A lone expression, for example a field's default.
ExpressionPtr ParseExpression(std::string_view text);

}  // namespace jet::sql
