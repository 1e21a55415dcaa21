#pragma once

#include "jet/sql/ast.h"
#include "jet/sql/typed_sql.h"

namespace jet::sql {

class ExpressionTranslator;

// A call of any function of the dialect. Fails with 3085 for an unknown name, 3087 for a wrong
// number of arguments.
TypedSql TranslateCall(const Expression& expression, ExpressionTranslator& translator);

}  // namespace jet::sql
