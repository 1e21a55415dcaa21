#pragma once

#include <string>

#include "jet/sql/ast.h"
#include "jet/sql/typed_sql.h"

// Sub-selects within expressions.
namespace jet::sql {

class ExpressionTranslator;

// A sub-select as a raw value: Null if there are no rows; fails with 3354 for more than one.
TypedSql TranslateSubquery(const Expression& expression, ExpressionTranslator& translator);

// The conditions EXISTS (…), value IN (…) and comparison with ANY or ALL.
std::string TranslateExists(const Expression& expression, ExpressionTranslator& translator);
std::string TranslateInSelect(const Expression& value, const Select& select,
                              const Expression& condition, ExpressionTranslator& translator);
std::string TranslateQuantified(const Expression& expression, ExpressionTranslator& translator);

}  // namespace jet::sql
