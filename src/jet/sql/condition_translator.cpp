#include <utility>
#include <vector>

#include "jet/errors.h"
#include "jet/sql/expression_translator.h"

namespace jet::sql {
namespace {

// Functions take a limited number of arguments: a long list becomes several calls.
std::string InUnknown(const std::string& value, const std::vector<std::string>& items) {
  constexpr std::size_t kMostItems = 100;
  std::string sql;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i % kMostItems == 0) sql += (i == 0 ? "jet_in(" : ") OR jet_in(") + value;
    sql += ", " + items[i];
  }
  return sql + ")";
}

bool IsLeaf(const Expression& expression) {
  return expression.kind <= ExpressionKind::kName;
}

bool IsKnown(ValueType type) {
  return type != ValueType::kUnknown && type != ValueType::kNull;
}

}  // namespace

std::string ExpressionTranslator::Condition(const Expression& expression) {
  switch (expression.kind) {
    case ExpressionKind::kIsNull:
      return "(" + Value(*expression.arguments[0]).sql +
             (expression.negated ? " IS NOT NULL)" : " IS NULL)");
    case ExpressionKind::kBetween:
      return Between(expression);
    case ExpressionKind::kIn:
      return In(expression);
    case ExpressionKind::kExists:
      return Exists(expression);
    case ExpressionKind::kUnary:
      if (expression.op == Operator::kNot)
        return "(NOT " + Condition(*expression.arguments[0]) + ")";
      break;
    case ExpressionKind::kBinary:
      if (std::string condition = BinaryCondition(expression); !condition.empty()) return condition;
      break;
    default:
      break;
  }
  // Any other value is true when it is not zero.
  return "(" + NumberSql(Value(expression)) + " <> 0)";
}

// Empty when the operator does not make a condition. And, Or and the like are logic between truths:
// the dialect has no operations on bits.
std::string ExpressionTranslator::BinaryCondition(const Expression& expression) {
  const Expression& left = *expression.arguments[0];
  const Expression& right = *expression.arguments[1];
  if (const std::string_view symbol = ComparisonSymbol(expression.op); !symbol.empty()) {
    if (right.quantifier != Quantifier::kNone) return Quantified(expression);
    return Compare(Raw(left), symbol, Raw(right), expression);
  }
  switch (expression.op) {
    case Operator::kLike:
      return (expression.text.empty() ? "jet_like(" : "jet_alike(") + TextSql(Value(left)) + ", " +
             TextSql(Value(right)) + ")";
    case Operator::kAnd:
      return "(" + Condition(left) + " AND " + Condition(right) + ")";
    case Operator::kOr:
      return "(" + Condition(left) + " OR " + Condition(right) + ")";
    case Operator::kXor:
      return "(" + Condition(left) + " <> " + Condition(right) + ")";
    case Operator::kEqv:
      return "(" + Condition(left) + " = " + Condition(right) + ")";
    case Operator::kImp:
      return "((NOT " + Condition(left) + ") OR " + Condition(right) + ")";
    default:
      return {};
  }
}

void ExpressionTranslator::CheckComparable(ValueType left, ValueType right,
                                           const Expression& expression) const {
  if (!IsKnown(left) || !IsKnown(right)) return;
  const bool differ_in_text = (left == ValueType::kText) != (right == ValueType::kText);
  const bool differ_in_binary = (left == ValueType::kBinary) != (right == ValueType::kBinary);
  if (differ_in_text || differ_in_binary)
    Fail(kTypeMismatch, ": " + std::string(TextOf(expression)));
}

std::string ExpressionTranslator::Compare(const TypedSql& raw_left, std::string_view op,
                                          const TypedSql& raw_right, const Expression& expression) {
  const std::string symbol = " " + std::string(op) + " ";
  // Columns that lie alike compare as they lie, so that an index can serve.
  const bool is_stored_form = raw_left.type >= ValueType::kStoredCurrency;
  if (is_stored_form && raw_left.type == raw_right.type)
    return "(" + raw_left.sql + symbol + raw_right.sql + ")";
  const TypedSql left = Decoded(raw_left);
  const TypedSql right = Decoded(raw_right);
  CheckComparable(left.type, right.type, expression);
  // Of two values whose types are not known beforehand, the kinds are compared when they are met.
  if (left.type == ValueType::kUnknown || right.type == ValueType::kUnknown)
    return "(jet_compare(" + left.sql + ", " + right.sql + ")" + symbol + "0)";
  const bool is_text = left.type == ValueType::kText || right.type == ValueType::kText;
  return "(" + left.sql + (is_text ? " COLLATE JET" : "") + symbol + right.sql + ")";
}

// The bounds may stand in either order. Plain columns and literals are written out, so that an
// index can serve; anything longer goes to a function, or nested tests would grow without bounds.
std::string ExpressionTranslator::Between(const Expression& expression) {
  const TypedSql value = Value(*expression.arguments[0]);
  const TypedSql low = Value(*expression.arguments[1]);
  const TypedSql high = Value(*expression.arguments[2]);
  CheckComparable(value.type, low.type, expression);
  CheckComparable(value.type, high.type, expression);
  const std::string prefix = expression.negated ? "(NOT " : "(";
  const bool is_plain = IsLeaf(*expression.arguments[0]) && IsLeaf(*expression.arguments[1]) &&
                        IsLeaf(*expression.arguments[2]);
  if (!is_plain)
    return prefix + "jet_between(" + value.sql + ", " + low.sql + ", " + high.sql + "))";
  const auto within = [&](const TypedSql& from, const TypedSql& to) {
    return "(" + Compare(value, ">=", from, expression) + " AND " +
           Compare(value, "<=", to, expression) + ")";
  };
  return prefix + "(" + within(low, high) + " OR " + within(high, low) + "))";
}

std::string ExpressionTranslator::In(const Expression& expression) {
  if (expression.select) {
    const std::string test = InSelect(*expression.arguments[0], *expression.select, expression);
    return expression.negated ? "(NOT " + test + ")" : test;
  }
  const TypedSql value = Value(*expression.arguments[0]);
  bool is_known = IsKnown(value.type);
  std::vector<std::string> item_list;
  std::string items;
  for (std::size_t i = 1; i < expression.arguments.size(); ++i) {
    const TypedSql item = Value(*expression.arguments[i]);
    CheckComparable(value.type, item.type, *expression.arguments[i]);
    is_known = is_known && item.type != ValueType::kUnknown;
    items += (items.empty() ? "" : ", ") + item.sql;
    item_list.push_back(item.sql);
  }
  const std::string prefix = expression.negated ? "(NOT " : "(";
  if (!is_known) return prefix + "(" + InUnknown(value.sql, item_list) + "))";
  const char* const collation = value.type == ValueType::kText ? " COLLATE JET" : "";
  return prefix + "(" + value.sql + collation + " IN (" + items + ")))";
}

}  // namespace jet::sql
