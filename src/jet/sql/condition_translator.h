#pragma once

#include <string>

#include "jet/sql/ast.h"

namespace jet::sql {

class ExpressionTranslator;

// True for comparisons, LIKE, IN, NOT, AND and the like.
bool IsCondition(const Expression& expression);

// 1, 0 or Null. Any other expression is true if its value is not zero.
std::string TranslateCondition(const Expression& expression, ExpressionTranslator& translator);

}  // namespace jet::sql
