#pragma once

#include <string>
#include <string_view>

#include "jet/sql/ast.h"
#include "jet/sql/typed_sql.h"

namespace jet::sql {

// + and - before a value.
TypedSql Signed(Operator op, const TypedSql& operand);

// + - * / \ Mod ^ and &. The operands are raw, because amounts are computed in ten-thousandths.
TypedSql Computed(Operator op, const TypedSql& raw_a, const TypedSql& raw_b);

// "=", "<>" …; empty for any other operator.
std::string_view ComparisonSymbol(Operator op);

// False if the type shows only at run time.
bool IsKnown(ValueType type);

// Fails with 3464 if the types cannot be compared. The text is the expression's.
void CheckComparable(ValueType left, ValueType right, std::string_view text);

// A condition: 1, 0 or Null.
std::string ComparedSql(const TypedSql& raw_left, std::string_view symbol,
                        const TypedSql& raw_right, std::string_view text);

}  // namespace jet::sql
