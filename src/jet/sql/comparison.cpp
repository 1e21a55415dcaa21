#include "jet/sql/comparison.h"

#include "jet/errors.h"
#include "jet/storage_sql.h"

namespace jet::sql {

std::string_view ComparisonSymbol(Operator op) {
  for (const Comparison& comparison : kComparisons) {
    if (comparison.op == op) return comparison.symbol;
  }
  return {};
}

bool IsKnown(ValueType type) {
  return type != ValueType::kUnknown && type != ValueType::kNull;
}

void CheckComparable(ValueType left, ValueType right, std::string_view text) {
  if (!IsKnown(left) || !IsKnown(right)) return;
  const bool differ_in_text = (left == ValueType::kText) != (right == ValueType::kText);
  const bool differ_in_binary = (left == ValueType::kBinary) != (right == ValueType::kBinary);
  if (differ_in_text || differ_in_binary) Fail(kTypeMismatch, ": " + std::string(text));
}

std::string ComparedSql(const TypedSql& raw_left, std::string_view symbol,
                        const TypedSql& raw_right, std::string_view text) {
  const std::string between = " " + std::string(symbol) + " ";
  // Columns of the same stored form are compared in it, so that an index can be used.
  const bool is_stored_form = raw_left.type >= ValueType::kStoredCurrency;
  if (is_stored_form && raw_left.type == raw_right.type)
    return "(" + raw_left.sql + between + raw_right.sql + ")";
  const TypedSql left = Decoded(raw_left);
  const TypedSql right = Decoded(raw_right);
  CheckComparable(left.type, right.type, text);
  if (left.type == ValueType::kUnknown || right.type == ValueType::kUnknown)
    return "(" + CallSql(fn::kCompare, {left.sql, right.sql}) + between + "0)";
  const bool is_text = left.type == ValueType::kText || right.type == ValueType::kText;
  return "(" + left.sql + (is_text ? kCollate : "") + between + right.sql + ")";
}

}  // namespace jet::sql
