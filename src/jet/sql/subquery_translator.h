#pragma once

#include <string>

#include "jet/sql/ast.h"
#include "jet/sql/typed_sql.h"

// Sub-selects within expressions.
namespace jet::sql {

class ExpressionTranslator;

// A sub-select as a raw value: Null without rows, 3354 with more than one.
TypedSql TranslateSubquery(const Expression& expression, ExpressionTranslator& translator);

// The conditions EXISTS (…), value IN (…), and a comparison with ANY or ALL of the values.
std::string TranslateExists(const Expression& expression, ExpressionTranslator& translator);
std::string TranslateInSelect(const Expression& value, const Select& select,
                              const Expression& condition, ExpressionTranslator& translator);
std::string TranslateQuantified(const Expression& expression, ExpressionTranslator& translator);

}  // namespace jet::sql
