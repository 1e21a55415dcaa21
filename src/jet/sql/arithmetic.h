#pragma once

#include "jet/sql/ast.h"
#include "jet/sql/typed_sql.h"

// The operators that compute a value: + - * / \ Mod ^ & and the signs.
namespace jet::sql {

TypedSql Signed(Operator op, const TypedSql& operand);

// The operands are raw, because amounts are computed in ten-thousandths.
TypedSql Computed(Operator op, const TypedSql& raw_a, const TypedSql& raw_b);

}  // namespace jet::sql
