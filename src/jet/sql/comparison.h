#pragma once

#include <string>
#include <string_view>

#include "jet/sql/ast.h"
#include "jet/sql/typed_sql.h"

// Comparisons of two values. The text is the expression's, for the error 3464 about types that
// cannot be compared.
namespace jet::sql {

// "=", "<>" …; empty for any other operator.
std::string_view ComparisonSymbol(Operator op);

// False if the type shows only at run time.
bool IsKnown(ValueType type);

void CheckComparable(ValueType left, ValueType right, std::string_view text);

// A condition: 1, 0 or Null.
std::string ComparedSql(const TypedSql& raw_left, std::string_view symbol,
                        const TypedSql& raw_right, std::string_view text);

}  // namespace jet::sql
