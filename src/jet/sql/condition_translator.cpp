#include "jet/sql/condition_translator.h"

#include <algorithm>
#include <vector>

#include "foundation/text.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/operators.h"
#include "jet/sql/subquery_translator.h"
#include "jet/storage_sql.h"

namespace jet::sql {
namespace {

// SQLite limits the number of arguments: a long list becomes several calls.
std::string InUnknown(const std::string& value, const std::vector<std::string>& items) {
  constexpr std::size_t kMostItems = 100;
  std::string sql;
  for (std::size_t first = 0; first < items.size(); first += kMostItems) {
    std::string arguments = value;
    for (std::size_t i = first; i < std::min(first + kMostItems, items.size()); ++i)
      arguments += ", " + items[i];
    Append(sql, CallSql(fn::kIn, {arguments}), " OR ");
  }
  return sql;
}

bool IsLeaf(const Expression& expression) {
  return expression.kind <= ExpressionKind::kName;
}

// Empty if the operator does not make a condition. And, Or and the like are logical only; the
// dialect has no bitwise operators.
std::string BinaryCondition(const Expression& expression, ExpressionTranslator& translator) {
  const Expression& left = *expression.arguments[0];
  const Expression& right = *expression.arguments[1];
  if (const std::string_view symbol = ComparisonSymbol(expression.op); !symbol.empty()) {
    if (right.quantifier != Quantifier::kNone) return TranslateQuantified(expression, translator);
    return ComparedSql(translator.Raw(left), symbol, translator.Raw(right),
                       translator.TextOf(expression));
  }
  switch (expression.op) {
    case Operator::kLike:
      return CallSql(expression.text.empty() ? fn::kLike : fn::kAlike,
                     {TextSql(translator.Value(left)), TextSql(translator.Value(right))});
    case Operator::kAnd:
      return "(" + translator.Condition(left) + " AND " + translator.Condition(right) + ")";
    case Operator::kOr:
      return "(" + translator.Condition(left) + " OR " + translator.Condition(right) + ")";
    case Operator::kXor:
      return "(" + translator.Condition(left) + " <> " + translator.Condition(right) + ")";
    case Operator::kEqv:
      return "(" + translator.Condition(left) + " = " + translator.Condition(right) + ")";
    case Operator::kImp:
      return "((NOT " + translator.Condition(left) + ") OR " + translator.Condition(right) + ")";
    default:
      return {};
  }
}

// The bounds may be in either order. Columns and literals are written out, so that an index can be
// used; anything else goes to a function, or nested tests would grow exponentially.
std::string Between(const Expression& expression, ExpressionTranslator& translator) {
  const TypedSql value = translator.Value(*expression.arguments[0]);
  const TypedSql low = translator.Value(*expression.arguments[1]);
  const TypedSql high = translator.Value(*expression.arguments[2]);
  const std::string_view text = translator.TextOf(expression);
  CheckComparable(value.type, low.type, text);
  CheckComparable(value.type, high.type, text);
  const std::string prefix = expression.negated ? "(NOT " : "(";
  const bool is_plain = IsLeaf(*expression.arguments[0]) && IsLeaf(*expression.arguments[1]) &&
                        IsLeaf(*expression.arguments[2]);
  if (!is_plain) return prefix + CallSql(fn::kBetween, {value.sql, low.sql, high.sql}) + ")";
  const auto within = [&](const TypedSql& from, const TypedSql& to) {
    return "(" + ComparedSql(value, ">=", from, text) + " AND " +
           ComparedSql(value, "<=", to, text) + ")";
  };
  return prefix + "(" + within(low, high) + " OR " + within(high, low) + "))";
}

std::string In(const Expression& expression, ExpressionTranslator& translator) {
  if (expression.select) {
    const std::string test =
        TranslateInSelect(*expression.arguments[0], *expression.select, expression, translator);
    return expression.negated ? "(NOT " + test + ")" : test;
  }
  const TypedSql value = translator.Value(*expression.arguments[0]);
  bool is_known = IsKnown(value.type);
  std::vector<std::string> items;
  for (std::size_t i = 1; i < expression.arguments.size(); ++i) {
    const TypedSql item = translator.Value(*expression.arguments[i]);
    CheckComparable(value.type, item.type, translator.TextOf(*expression.arguments[i]));
    is_known = is_known && item.type != ValueType::kUnknown;
    items.push_back(item.sql);
  }
  const std::string prefix = expression.negated ? "(NOT " : "(";
  if (!is_known) return prefix + "(" + InUnknown(value.sql, items) + "))";
  const char* const collation = value.type == ValueType::kText ? kCollate : "";
  return prefix + "(" + value.sql + collation + " IN (" + tmw::Joined(items, ", ") + ")))";
}

}  // namespace

bool IsCondition(const Expression& expression) {
  switch (expression.kind) {
    case ExpressionKind::kIsNull:
    case ExpressionKind::kBetween:
    case ExpressionKind::kIn:
    case ExpressionKind::kExists:
      return true;
    case ExpressionKind::kUnary:
      return expression.op == Operator::kNot;
    case ExpressionKind::kBinary:
      return !ComparisonSymbol(expression.op).empty() || expression.op == Operator::kLike ||
             expression.op >= Operator::kAnd;
    default:
      return false;
  }
}

std::string TranslateCondition(const Expression& expression, ExpressionTranslator& translator) {
  switch (expression.kind) {
    case ExpressionKind::kIsNull:
      return "(" + translator.Value(*expression.arguments[0]).sql +
             (expression.negated ? " IS NOT NULL)" : " IS NULL)");
    case ExpressionKind::kBetween:
      return Between(expression, translator);
    case ExpressionKind::kIn:
      return In(expression, translator);
    case ExpressionKind::kExists:
      return TranslateExists(expression, translator);
    case ExpressionKind::kUnary:
      if (expression.op == Operator::kNot)
        return "(NOT " + translator.Condition(*expression.arguments[0]) + ")";
      break;
    case ExpressionKind::kBinary:
      if (std::string condition = BinaryCondition(expression, translator); !condition.empty())
        return condition;
      break;
    default:
      break;
  }
  return "(" + NumberSql(translator.Value(expression)) + " <> 0)";
}

}  // namespace jet::sql
