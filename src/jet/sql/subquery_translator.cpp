#include "jet/sql/subquery_translator.h"

#include "jet/errors.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/operators.h"
#include "jet/sql/select_translator.h"
#include "jet/storage_sql.h"

namespace jet::sql {
namespace {

SelectSql Translated(const Select& select, const ExpressionTranslator& translator) {
  return TranslateNested(select, translator.InScope().Inside(), translator.Statement(),
                         RowOrder::kAny);
}

SelectSql OneColumn(const Select& select, const ExpressionTranslator& translator) {
  SelectSql translated = Translated(select, translator);
  if (translated.columns.size() != 1) Fail(kManyFieldsInSubquery);
  return translated;
}

}  // namespace

TypedSql TranslateSubquery(const Expression& expression, ExpressionTranslator& translator) {
  const SelectSql select = OneColumn(*expression.select, translator);
  const OutputColumn& column = select.columns.front();
  if (select.is_one_row) return {"(" + select.sql + ")", column.type, column.field};
  return {"(SELECT " + CallSql(fn::kOnly, {"o0"}) + " FROM (" + select.sql + "))", column.type,
          column.field};
}

std::string TranslateExists(const Expression& expression, ExpressionTranslator& translator) {
  return "EXISTS (" + Translated(*expression.select, translator).sql + ")";
}

std::string TranslateInSelect(const Expression& value, const Select& select,
                              const Expression& condition, ExpressionTranslator& translator) {
  TypedSql left = translator.Raw(value);
  SelectSql values = OneColumn(select, translator);
  const TypedSql item = {"o0", values.columns.front().type};
  const bool lie_alike = left.type == item.type;
  if (!lie_alike) left = Decoded(left);
  const TypedSql right = lie_alike ? item : Decoded(item);
  CheckComparable(left.type, right.type, translator.TextOf(condition));
  if (right.sql != item.sql) values.sql = "SELECT " + right.sql + " FROM (" + values.sql + ")";
  const bool may_be_text =
      CollationOf(left.type) == kCollate || CollationOf(right.type) == kCollate;
  return "(" + left.sql + (may_be_text ? kCollate : "") + " IN (" + values.sql + "))";
}

// Null if Null values leave the result open. Only the least or the greatest value matters, so an
// uncorrelated sub-select runs once.
std::string TranslateQuantified(const Expression& expression, ExpressionTranslator& translator) {
  const Expression& right = *expression.arguments[1];
  const bool is_any = right.quantifier == Quantifier::kAny;
  const bool is_equal = expression.op == Operator::kEqual;
  const bool is_equality = is_equal || expression.op == Operator::kNotEqual;
  if (is_equality && is_any == is_equal) {
    const std::string test =
        TranslateInSelect(*expression.arguments[0], *right.select, expression, translator);
    return is_equal ? test : "(NOT " + test + ")";
  }
  const TypedSql left = translator.Raw(*expression.arguments[0]);
  const SelectSql values = OneColumn(*right.select, translator);
  const ValueType type = values.columns.front().type;
  const auto test = [&](Operator op, const char* bound) {
    return ComparedSql(left, ComparisonSymbol(op), {bound, type}, translator.TextOf(expression));
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
