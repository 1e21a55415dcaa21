#pragma once

#include <string>

#include "jet/sql/ast.h"

namespace jet::sql {

class ExpressionTranslator;

// True for an expression whose value is a truth: comparisons, LIKE, IN, NOT, AND and the like.
bool IsCondition(const Expression& expression);

// 1, 0 or Null; an expression that is no condition is true when it is not zero.
std::string TranslateCondition(const Expression& expression, ExpressionTranslator& translator);

}  // namespace jet::sql
