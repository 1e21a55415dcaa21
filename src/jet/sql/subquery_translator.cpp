#include <utility>

#include "jet/errors.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/select_translator.h"

namespace jet::sql {
namespace {

SelectSql OneColumn(const Select& select, const Scope& scope, std::string_view statement) {
  SelectSql translated = TranslateNested(select, scope.Inside(), statement, RowOrder::kAny);
  if (translated.columns.size() != 1) Fail(kManyFieldsInSubquery);
  return translated;
}

}  // namespace

// A sub-select as a value: Null without rows, 3354 with more than one.
TypedSql ExpressionTranslator::Subquery(const Expression& expression) {
  SelectSql select = OneColumn(*expression.select, scope_, statement_);
  const OutputColumn& column = select.columns.front();
  if (select.is_one_row) return {"(" + select.sql + ")", column.type, column.field};
  return {"(SELECT jet_only(o0) FROM (" + select.sql + "))", column.type, column.field};
}

std::string ExpressionTranslator::Exists(const Expression& expression) {
  const SelectSql select =
      TranslateNested(*expression.select, scope_.Inside(), statement_, RowOrder::kAny);
  return "EXISTS (" + select.sql + ")";
}

std::string ExpressionTranslator::InSelect(const Expression& value, const Select& select,
                                           const Expression& where) {
  TypedSql left = Raw(value);
  SelectSql values = OneColumn(select, scope_, statement_);
  const TypedSql item = {"o0", values.columns.front().type};
  const bool lie_alike = left.type == item.type;
  if (!lie_alike) left = Decoded(left);
  const TypedSql right = lie_alike ? item : Decoded(item);
  CheckComparable(left.type, right.type, where);
  if (right.sql != item.sql) values.sql = "SELECT " + right.sql + " FROM (" + values.sql + ")";
  const bool may_be_text = !CollationOf(left.type).empty() || !CollationOf(right.type).empty();
  return "(" + left.sql + (may_be_text ? " COLLATE JET" : "") + " IN (" + values.sql + "))";
}

// A comparison with ANY or ALL of a sub-select's values: unknown when Null leaves it open. Only the
// least or the greatest of them matters, so that a sub-select that stands for itself is run once.
std::string ExpressionTranslator::Quantified(const Expression& expression) {
  const Expression& right = *expression.arguments[1];
  const bool is_any = right.quantifier == Quantifier::kAny;
  const bool is_equal = expression.op == Operator::kEqual;
  const bool is_equality = is_equal || expression.op == Operator::kNotEqual;
  if (is_equality && is_any == is_equal) {
    const std::string test = InSelect(*expression.arguments[0], *right.select, expression);
    return is_equal ? test : "(NOT " + test + ")";
  }
  const TypedSql left = Raw(*expression.arguments[0]);
  const SelectSql values = OneColumn(*right.select, scope_, statement_);
  const ValueType type = values.columns.front().type;
  const auto test = [&](Operator op, const char* bound) {
    return Compare(left, ComparisonSymbol(op), {bound, type}, expression);
  };
  const bool is_upward =
      expression.op == Operator::kGreater || expression.op == Operator::kGreaterOrEqual;
  std::string result;
  if (is_equality) {
    // "<> ANY" is the opposite of "= ALL".
    result = test(Operator::kEqual, "low") + " AND " + test(Operator::kEqual, "high");
  } else {
    result = test(expression.op, is_upward == is_any ? "low" : "high");
  }
  if (is_any && !is_equality) {
    result = "total > 0 AND (" + result + " OR CASE WHEN present = total THEN 0 END)";
  } else {
    result = "total = 0 OR (" + result + " AND CASE WHEN present = total THEN 1 END)";
  }
  const std::string value = "o0" + std::string(CollationOf(type));
  return std::string(is_equality && is_any ? "(NOT " : "(") +
         "(WITH s AS MATERIALIZED (SELECT min(" + value + ") AS low, max(" + value +
         ") AS high, count(*) AS total, count(o0) AS present FROM (" + values.sql + ")) SELECT " +
         result + " FROM s))";
}

}  // namespace jet::sql
