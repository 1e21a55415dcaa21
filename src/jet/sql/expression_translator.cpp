#include "jet/sql/expression_translator.h"

#include <array>
#include <charconv>
#include <utility>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/sql/functions.h"

namespace jet::sql {
namespace {

std::string RealLiteral(double value) {
  std::array<char, 40> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  std::string text(buffer.data(), result.ptr);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

bool IsNumeric(ValueType type) {
  switch (type) {
    case ValueType::kBoolean:
    case ValueType::kInteger:
    case ValueType::kNumber:
    case ValueType::kSingle:
    case ValueType::kCurrency:
    case ValueType::kDate:
      return true;
    default:
      return false;
  }
}

// The type of a sum, difference or product of two numeric values.
ValueType Wider(ValueType a, ValueType b) {
  for (const ValueType type : {ValueType::kNull, ValueType::kUnknown, ValueType::kNumber}) {
    if (a == type || b == type) return type == ValueType::kNull ? ValueType::kUnknown : type;
  }
  if (a == ValueType::kSingle || b == ValueType::kSingle) return ValueType::kNumber;
  if (a == ValueType::kCurrency || b == ValueType::kCurrency) return ValueType::kCurrency;
  return ValueType::kInteger;
}

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

std::string CallSql(std::string_view function, std::string_view first, std::string_view second) {
  return std::string(function) + "(" + std::string(first) + ", " + std::string(second) + ")";
}

std::string Code(ValueType type) {
  return std::to_string(static_cast<std::int32_t>(type));
}

}  // namespace

std::string_view ComparisonSymbol(Operator op) {
  switch (op) {
    case Operator::kEqual:
      return "=";
    case Operator::kNotEqual:
      return "<>";
    case Operator::kLess:
      return "<";
    case Operator::kLessOrEqual:
      return "<=";
    case Operator::kGreater:
      return ">";
    case Operator::kGreaterOrEqual:
      return ">=";
    default:
      return {};
  }
}

ValueType TypeOfField(platform::DataType type) {
  switch (type) {
    case platform::DataType::kBoolean:
      return ValueType::kBoolean;
    case platform::DataType::kByte:
    case platform::DataType::kInteger:
    case platform::DataType::kLong:
      return ValueType::kInteger;
    case platform::DataType::kCurrency:
      return ValueType::kCurrency;
    case platform::DataType::kSingle:
      return ValueType::kSingle;
    case platform::DataType::kDouble:
      return ValueType::kNumber;
    case platform::DataType::kDate:
      return ValueType::kDate;
    case platform::DataType::kText:
    case platform::DataType::kMemo:
    case platform::DataType::kGuid:
      return ValueType::kText;
    default:
      return ValueType::kBinary;
  }
}

std::string NumberSql(const TypedSql& value) {
  if (IsNumeric(value.type) || value.type == ValueType::kNull) return value.sql;
  return "jet_number(" + value.sql + ")";
}

std::string TextSql(const TypedSql& value) {
  if (value.type == ValueType::kText || value.type == ValueType::kNull) return value.sql;
  return CallSql("jet_text", value.sql, Code(value.type));
}

// A text with a zero character would end there as a plain literal.
std::string TextLiteral(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string hex = "CAST(x'";
    for (const char c : text) {
      hex += kDigits[static_cast<unsigned char>(c) >> 4U];
      hex += kDigits[static_cast<unsigned char>(c) & 0x0FU];
    }
    return hex + "' AS TEXT)";
  }
  std::string literal = "'";
  for (const char c : text) {
    literal += c;
    if (c == '\'') literal += c;
  }
  return literal + "'";
}

std::string_view ExpressionTranslator::TextOf(const Expression& expression) const {
  return Excerpt(statement_.substr(expression.begin, expression.end - expression.begin));
}

TypedSql ExpressionTranslator::Value(const Expression& expression) {
  if (IsCondition(expression)) return {"(-" + Condition(expression) + ")", ValueType::kBoolean};
  switch (expression.kind) {
    case ExpressionKind::kNull:
      return {"NULL", ValueType::kNull};
    case ExpressionKind::kBoolean:
      return {expression.number == 0 ? "0" : "(-1)", ValueType::kBoolean};
    case ExpressionKind::kInteger:
      return {"(" + std::to_string(static_cast<std::int64_t>(expression.number)) + ")",
              ValueType::kInteger};
    case ExpressionKind::kNumber:
      return {RealLiteral(expression.number), ValueType::kNumber};
    case ExpressionKind::kDate:
      return {"(" + RealLiteral(expression.number) + ")", ValueType::kDate};
    case ExpressionKind::kText:
      return {TextLiteral(expression.text), ValueType::kText};
    case ExpressionKind::kName:
      return Name(expression);
    case ExpressionKind::kUnary:
      return Unary(expression);
    case ExpressionKind::kBinary:
      return Binary(expression);
    case ExpressionKind::kCall:
      return Call(expression);
    case ExpressionKind::kSubquery:
      FailUnsupported("SELECT в выражении");
    default:
      Fail(kSyntaxInExpression, "здесь нужно значение", TextOf(expression));
  }
}

TypedSql ExpressionTranslator::Name(const Expression& expression) {
  const Scope::Found found = scope_.Find(expression.qualifier, expression.text);
  if (found.field == nullptr) {
    const bool is_qualified = !expression.qualifier.empty();
    scope_.NoteUnknown(is_qualified ? expression.qualifier + "." + expression.text
                                    : expression.text);
    return {"NULL", ValueType::kUnknown};
  }
  if (!in_aggregate_) met_lone_field_ = true;
  const std::string column = found.table->sql_alias + "." + found.field->column;
  const platform::DataType type = found.field->definition.type;
  if (type == platform::DataType::kCurrency) return {"(" + column + "/10000.0)", TypeOfField(type)};
  if (type == platform::DataType::kGuid) return {"jet_guid(" + column + ")", TypeOfField(type)};
  return {column, TypeOfField(type)};
}

TypedSql ExpressionTranslator::Unary(const Expression& expression) {
  const TypedSql operand = Value(*expression.arguments[0]);
  const ValueType type = Wider(operand.type, ValueType::kInteger);
  if (expression.op == Operator::kPlusSign) return {NumberSql(operand), type};
  return {"(-" + NumberSql(operand) + ")", type};
}

TypedSql ExpressionTranslator::Binary(const Expression& expression) {
  const TypedSql a = Value(*expression.arguments[0]);
  const TypedSql b = Value(*expression.arguments[1]);
  switch (expression.op) {
    case Operator::kConcatenate:
      return {CallSql("jet_join", TextSql(a), TextSql(b)), ValueType::kText};
    case Operator::kDivide:
      return {CallSql("jet_divide", NumberSql(a), NumberSql(b)), ValueType::kNumber};
    case Operator::kIntegerDivide:
      return {CallSql("jet_whole_divide", NumberSql(a), NumberSql(b)), ValueType::kInteger};
    case Operator::kModulo:
      return {CallSql("jet_modulo", NumberSql(a), NumberSql(b)), ValueType::kInteger};
    case Operator::kPower:
      return {CallSql("jet_power", NumberSql(a), NumberSql(b)), ValueType::kNumber};
    case Operator::kMultiply:
      return {"(" + NumberSql(a) + " * " + NumberSql(b) + ")", Wider(a.type, b.type)};
    default:
      return Sum(a, expression.op == Operator::kAdd, b);
  }
}

// A moment plus or minus a number is a moment; two moments differ by a number; "+" joins two texts.
TypedSql ExpressionTranslator::Sum(const TypedSql& a, bool is_sum, const TypedSql& b) {
  if (a.type == ValueType::kNull || b.type == ValueType::kNull) return {"NULL", ValueType::kNull};
  if (is_sum && a.type == ValueType::kText && b.type == ValueType::kText)
    return {"(" + a.sql + " || " + b.sql + ")", ValueType::kText};
  const bool is_plain = IsNumeric(a.type) && IsNumeric(b.type);
  if (is_sum && !is_plain) return {CallSql("jet_add", a.sql, b.sql), ValueType::kUnknown};
  ValueType type = Wider(a.type, b.type);
  if (a.type == ValueType::kDate || b.type == ValueType::kDate) {
    const bool is_distance = !is_sum && a.type == b.type;
    type = is_distance ? ValueType::kNumber : ValueType::kDate;
  }
  return {"(" + NumberSql(a) + (is_sum ? " + " : " - ") + NumberSql(b) + ")", type};
}

TypedSql ExpressionTranslator::Call(const Expression& expression) {
  const std::size_t count = expression.arguments.size();
  if (tmw::EqualIgnoringCase(expression.text, "iif")) return CallImmediateIf(expression);
  if (tmw::EqualIgnoringCase(expression.text, "isnull")) {
    if (count != 1) Fail(kWrongArgumentCount, expression.text);
    return {"(-(" + Value(*expression.arguments[0]).sql + " IS NULL))", ValueType::kBoolean};
  }
  const FunctionSpec* const function = FindFunction(expression.text);
  if (function == nullptr) Fail(kUndefinedFunction, expression.text);
  if (count < function->least_arguments || count > function->most_arguments)
    Fail(kWrongArgumentCount, expression.text);
  if (function->is_aggregate)
    return CallAggregate(expression, function->sql_name, {"", function->type});
  std::string arguments;
  for (const ExpressionPtr& argument : expression.arguments)
    arguments += (arguments.empty() ? "" : ", ") + Value(*argument).sql;
  return {std::string(function->sql_name) + "(" + arguments + ")", function->type};
}

TypedSql ExpressionTranslator::CallImmediateIf(const Expression& expression) {
  if (expression.arguments.size() != 3) Fail(kWrongArgumentCount, expression.text);
  const std::string condition = Condition(*expression.arguments[0]);
  const TypedSql yes = Value(*expression.arguments[1]);
  const TypedSql no = Value(*expression.arguments[2]);
  ValueType type = yes.type == no.type ? yes.type : ValueType::kUnknown;
  if (yes.type == ValueType::kNull) type = no.type;
  if (no.type == ValueType::kNull) type = yes.type;
  return {"(CASE WHEN " + condition + " THEN " + yes.sql + " ELSE " + no.sql + " END)", type};
}

TypedSql ExpressionTranslator::CallAggregate(const Expression& expression,
                                             std::string_view sql_name, TypedSql result) {
  if (!allows_aggregates_ || in_aggregate_) Fail(kNoAggregateHere, expression.text);
  met_aggregate_ = true;
  const Expression& argument = *expression.arguments[0];
  if (argument.kind == ExpressionKind::kStar) {
    if (sql_name != "count") Fail(kWrongArgumentCount, expression.text);
    return {"count(*)", result.type};
  }
  in_aggregate_ = true;
  TypedSql value = Value(argument);
  in_aggregate_ = false;
  const bool is_text = value.type == ValueType::kText;
  if (is_text && (sql_name == "sum" || sql_name == "avg"))
    Fail(kTypeMismatch, ": " + std::string(TextOf(expression)));
  if (is_text) value.sql += " COLLATE JET";
  if (result.type == ValueType::kUnknown) result.type = value.type;
  result.sql = std::string(sql_name) + "(" + value.sql + ")";
  return result;
}

std::string ExpressionTranslator::Assigned(const Expression& expression, const FieldInfo& field) {
  TypedSql value = Value(expression);
  if (expression.kind == ExpressionKind::kName && value.type == ValueType::kCurrency) {
    // An amount that is only copied keeps all its digits.
    const Scope::Found found = scope_.Find(expression.qualifier, expression.text);
    value = {found.table->sql_alias + "." + found.field->column, ValueType::kStoredCurrency};
  }
  const Target& target = field.target;
  const int flags = (target.required ? 1 : 0) | (target.allow_zero_length ? 2 : 0) |
                    (target.in_primary_key ? 4 : 0);
  return "jet_to(" + value.sql + ", " + Code(value.type) + ", " +
         std::to_string(static_cast<std::int32_t>(target.type)) + ", " +
         std::to_string(target.size) + ", " + std::to_string(flags) + ", " +
         TextLiteral(target.name) + ")";
}

}  // namespace jet::sql
