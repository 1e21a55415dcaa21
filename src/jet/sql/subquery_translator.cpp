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

// A comparison with ANY or ALL of a sub-select's values: unknown when Null leaves it open.
std::string ExpressionTranslator::Quantified(const Expression& expression) {
  const Expression& right = *expression.arguments[1];
  const bool is_any = right.quantifier == Quantifier::kAny;
  if (is_any && expression.op == Operator::kEqual)
    return InSelect(*expression.arguments[0], *right.select, expression);
  const TypedSql left = Raw(*expression.arguments[0]);
  const SelectSql values = OneColumn(*right.select, scope_, statement_);
  const std::string test = Compare(left, ComparisonSymbol(expression.op),
                                   {"o0", values.columns.front().type}, expression);
  return std::string("(SELECT CASE WHEN ") + (is_any ? "max(v) = 1 THEN 1" : "min(v) = 0 THEN 0") +
         " WHEN count(*) > count(v) THEN NULL ELSE " + (is_any ? "0" : "1") + " END FROM (SELECT " +
         test + " AS v FROM (" + values.sql + ")))";
}

}  // namespace jet::sql
