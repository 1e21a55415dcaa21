#include "jet/sql/operators.h"

#include "jet/errors.h"
#include "jet/storage_sql.h"

namespace jet::sql {
namespace {

// The type of a sum, difference or product of two numeric values.
ValueType Wider(ValueType a, ValueType b) {
  for (const ValueType type : {ValueType::kNull, ValueType::kUnknown, ValueType::kNumber}) {
    if (a == type || b == type) return type == ValueType::kNull ? ValueType::kUnknown : type;
  }
  // Texts are read as numbers; dates are numbers of days.
  for (const ValueType type : {ValueType::kSingle, ValueType::kText, ValueType::kDate}) {
    if (a == type || b == type) return ValueType::kNumber;
  }
  if (a == ValueType::kCurrency || b == ValueType::kCurrency) return ValueType::kCurrency;
  return ValueType::kInteger;
}

// Results of whole numbers that do not fit 32 bits fail with 6.
TypedSql Checked(TypedSql result) {
  if (result.type == ValueType::kInteger) result.sql = CallSql(fn::kLong, {result.sql});
  return result;
}

// An amount or a whole number in ten-thousandths.
std::string ScaledSql(const TypedSql& raw) {
  if (raw.type == ValueType::kStoredCurrency) return raw.sql;
  return CallSql(fn::kScaled, {raw.sql});
}

// Sums, differences and products of amounts and whole numbers are exact, so that 0.1 + 0.2 is 0.3.
// Empty for any other operator.
TypedSql Amount(Operator op, const TypedSql& a, const TypedSql& b) {
  TypedSql amount{{}, ValueType::kStoredCurrency};
  if (op == Operator::kAdd || op == Operator::kSubtract) {
    const char* const sign = op == Operator::kAdd ? " + " : " - ";
    amount.sql = CallSql(fn::kAmount, {ScaledSql(a) + sign + ScaledSql(b)});
  } else if (op == Operator::kMultiply) {
    amount.sql = CallSql(fn::kAmountProduct, {ScaledSql(a), ScaledSql(b)});
  }
  return amount;
}

// Null counts as an empty text unless both are Null.
TypedSql Concatenation(const TypedSql& a, const TypedSql& b) {
  if (!a.is_present && !b.is_present)
    return {CallSql(fn::kJoin, {TextSql(a), TextSql(b)}), ValueType::kText};
  const auto present = [](const TypedSql& value) {
    return value.is_present ? value.sql : "ifnull(" + TextSql(value) + ", '')";
  };
  return {"(" + present(a) + " || " + present(b) + ")", ValueType::kText, nullptr, true};
}

// A date plus or minus a number is a date, the difference of two dates is a number; "+" joins
// texts.
TypedSql Sum(const TypedSql& a, bool is_sum, const TypedSql& b) {
  if (a.type == ValueType::kNull || b.type == ValueType::kNull) return {"NULL", ValueType::kNull};
  if (is_sum && a.type == ValueType::kText && b.type == ValueType::kText)
    return {"(" + a.sql + " || " + b.sql + ")", ValueType::kText};
  const bool is_plain = IsNumeric(a.type) && IsNumeric(b.type);
  if (is_sum && !is_plain) return {CallSql(fn::kAdd, {a.sql, b.sql}), ValueType::kUnknown};
  ValueType type = Wider(a.type, b.type);
  if (a.type == ValueType::kDate || b.type == ValueType::kDate) {
    const bool is_distance = !is_sum && a.type == b.type;
    type = is_distance ? ValueType::kNumber : ValueType::kDate;
  }
  return Checked({"(" + NumberSql(a) + (is_sum ? " + " : " - ") + NumberSql(b) + ")", type});
}

}  // namespace

TypedSql Signed(Operator op, const TypedSql& operand) {
  const ValueType type = Wider(operand.type, ValueType::kInteger);
  if (op == Operator::kPlusSign) return {NumberSql(operand), type};
  return Checked({"(-" + NumberSql(operand) + ")", type});
}

TypedSql Computed(Operator op, const TypedSql& raw_a, const TypedSql& raw_b) {
  const TypedSql a = Decoded(raw_a);
  const TypedSql b = Decoded(raw_b);
  if (Wider(a.type, b.type) == ValueType::kCurrency) {
    TypedSql amount = Amount(op, raw_a, raw_b);
    if (!amount.sql.empty()) return amount;
  }
  const auto call = [&](const Function& function, ValueType type) {
    return TypedSql{CallSql(function, {NumberSql(a), NumberSql(b)}), type};
  };
  switch (op) {
    case Operator::kConcatenate:
      return Concatenation(a, b);
    case Operator::kDivide:
      return call(fn::kDivide, ValueType::kNumber);
    case Operator::kIntegerDivide:
      return call(fn::kWholeDivide, ValueType::kInteger);
    case Operator::kModulo:
      return call(fn::kModulo, ValueType::kInteger);
    case Operator::kPower:
      return call(fn::kPower, ValueType::kNumber);
    case Operator::kMultiply:
      return Checked({"(" + NumberSql(a) + " * " + NumberSql(b) + ")", Wider(a.type, b.type)});
    default:
      return Sum(a, op == Operator::kAdd, b);
  }
}

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
    return "(" + raw_left.sql + std::string(CollationOf(raw_left.type)) + between + raw_right.sql +
           ")";
  const TypedSql left = Decoded(raw_left);
  const TypedSql right = Decoded(raw_right);
  CheckComparable(left.type, right.type, text);
  if (left.type == ValueType::kUnknown || right.type == ValueType::kUnknown)
    return "(" + CallSql(fn::kCompare, {left.sql, right.sql}) + between + "0)";
  const bool is_text = left.type == ValueType::kText || right.type == ValueType::kText;
  return "(" + left.sql + (is_text ? kCollate : "") + between + right.sql + ")";
}

}  // namespace jet::sql
