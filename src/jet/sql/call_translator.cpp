#include "jet/sql/call_translator.h"

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/scalar_functions.h"
#include "jet/sql/totals.h"
#include "jet/storage_sql.h"

// Functions that evaluate only the branch taken, or never return Null, are translated here; all
// others are in tables.
namespace jet::sql {
namespace {

struct FirstArgument {
  std::string operator()(std::monostate /*none*/) const { return {}; }
  std::string operator()(ports::DataType type) const {
    return std::to_string(static_cast<std::int32_t>(type));
  }
  std::string operator()(std::string_view interval) const { return TextLiteral(interval); }
};

std::string ArgumentSql(const TypedSql& value, char parameter) {
  switch (parameter) {
    case 't':
      return TextSql(value);
    case 'n':
      return NumberSql(value);
    case 'd':
      return MomentSql(value);
    case 'N':
      return NumberSql(value) + ", " + TypeCode(value.type);
    case 'v':
      return value.sql + ", " + TypeCode(value.type);
    default:
      return value.sql;
  }
}

// The type of a numeric function's result; texts are read as numbers.
ValueType NumericTypeOf(ValueType argument) {
  switch (argument) {
    case ValueType::kText:
    case ValueType::kBinary:
      return ValueType::kNumber;
    case ValueType::kBoolean:
      return ValueType::kInteger;
    default:
      return argument;
  }
}

bool IsCountable(ValueType type) {
  return type == ValueType::kInteger || type == ValueType::kNumber || type == ValueType::kSingle ||
         type == ValueType::kCurrency;
}

// The type of an expression that yields one of two values.
ValueType Common(ValueType a, ValueType b) {
  if (a == b || b == ValueType::kNull) return a;
  if (a == ValueType::kNull) return b;
  if (!IsCountable(a) || !IsCountable(b)) return ValueType::kUnknown;
  if (a == ValueType::kCurrency || b == ValueType::kCurrency)
    return a == ValueType::kInteger || b == ValueType::kInteger ? ValueType::kCurrency
                                                                : ValueType::kNumber;
  return ValueType::kNumber;
}

TypedSql CallScalar(const Expression& expression, const ScalarFunction& scalar,
                    ExpressionTranslator& translator) {
  std::string arguments = std::visit(FirstArgument{}, scalar.first);
  ValueType type = scalar.type;
  for (std::size_t i = 0; i < expression.arguments.size(); ++i) {
    const TypedSql value = translator.Value(*expression.arguments[i]);
    if (*scalar.function.name == '\0') return {value.sql, value.type};
    if (i == 0 && type == ValueType::kUnknown) type = NumericTypeOf(value.type);
    Append(arguments, ArgumentSql(value, scalar.parameters[i]));
  }
  return {CallSql(scalar.function, {arguments}), type};
}

TypedSql CallImmediateIf(const Expression& expression, ExpressionTranslator& translator) {
  if (expression.arguments.size() != 3) Fail(kWrongArgumentCount, expression.text);
  const std::string condition = translator.Condition(*expression.arguments[0]);
  const TypedSql yes = translator.Value(*expression.arguments[1]);
  const TypedSql no = translator.Value(*expression.arguments[2]);
  return {"CASE WHEN " + condition + " THEN " + yes.sql + " ELSE " + no.sql + " END",
          Common(yes.type, no.type)};
}

// Switch(condition, value, …): the value of the first condition that is true, or Null.
TypedSql CallSwitch(const Expression& expression, ExpressionTranslator& translator) {
  const std::size_t count = expression.arguments.size();
  if (count == 0 || count % 2 != 0) Fail(kWrongArgumentCount, expression.text);
  TypedSql result{"CASE", ValueType::kNull};
  for (std::size_t i = 0; i < count; i += 2) {
    const std::string condition = translator.Condition(*expression.arguments[i]);
    const TypedSql value = translator.Value(*expression.arguments[i + 1]);
    result.sql += " WHEN " + condition + " THEN " + value.sql;
    result.type = Common(result.type, value.type);
  }
  result.sql += " END";
  return result;
}

// Choose(number, value, …): the value of that number, or Null.
TypedSql CallChoose(const Expression& expression, ExpressionTranslator& translator) {
  const std::size_t count = expression.arguments.size();
  if (count < 2) Fail(kWrongArgumentCount, expression.text);
  const TypedSql number = translator.Value(*expression.arguments[0]);
  TypedSql result{"CASE " + CallSql(fn::kWhole, {NumberSql(number)}), ValueType::kNull};
  for (std::size_t i = 1; i < count; ++i) {
    const TypedSql value = translator.Value(*expression.arguments[i]);
    result.sql += " WHEN " + std::to_string(i) + " THEN " + value.sql;
    result.type = Common(result.type, value.type);
  }
  result.sql += " END";
  return result;
}

}  // namespace

TypedSql TranslateCall(const Expression& expression, ExpressionTranslator& translator) {
  const std::size_t count = expression.arguments.size();
  const std::string_view name = expression.text;
  if (tmw::EqualIgnoringCase(name, "iif")) return CallImmediateIf(expression, translator);
  if (tmw::EqualIgnoringCase(name, "switch")) return CallSwitch(expression, translator);
  if (tmw::EqualIgnoringCase(name, "choose")) return CallChoose(expression, translator);
  const bool is_null_test = tmw::EqualIgnoringCase(name, "isnull");
  if (is_null_test || tmw::EqualIgnoringCase(name, "isempty")) {
    if (count != 1) Fail(kWrongArgumentCount, name);
    const std::string value = translator.Value(*expression.arguments[0]).sql;
    // Values in a query may be Null, but never Empty.
    return {is_null_test ? "(-(" + value + " IS NULL))" : "0", ValueType::kBoolean};
  }
  if (const ScalarFunction* const function = FindScalarFunction(name, count))
    return CallScalar(expression, *function, translator);
  if (!IsTotal(name)) Fail(kUndefinedFunction, name);
  if (count != 1) Fail(kWrongArgumentCount, name);
  return TranslateTotal(expression, translator);
}

}  // namespace jet::sql
