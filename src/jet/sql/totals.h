#pragma once

#include <string_view>

#include "jet/sql/ast.h"
#include "jet/sql/typed_sql.h"

// Totals over the rows of a group: Count, Sum, First and the like.
namespace jet::sql {

class ExpressionTranslator;

// Ignores case. Each total takes one argument.
bool IsTotal(std::string_view name);

// A raw value. The call must have one argument.
TypedSql TranslateTotal(const Expression& expression, ExpressionTranslator& translator);

}  // namespace jet::sql
