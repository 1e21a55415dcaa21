#include "jet/sql/expression_translator.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "foundation/text.h"
#include "jet/errors.h"

namespace jet::sql {
namespace {

constexpr std::size_t kMostSql = 1000000;
constexpr int kMostAliasDepth = 20;

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
  // A text is read as a number; the day of a moment is one.
  for (const ValueType type : {ValueType::kSingle, ValueType::kText, ValueType::kDate}) {
    if (a == type || b == type) return ValueType::kNumber;
  }
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

// Whole numbers stay within 32 bits: a result beyond them fails with 6.
TypedSql Checked(TypedSql result) {
  if (result.type == ValueType::kInteger) result.sql = "jet_long(" + result.sql + ")";
  return result;
}

std::string CallSql(std::string_view function, std::string_view first, std::string_view second) {
  return std::string(function) + "(" + std::string(first) + ", " + std::string(second) + ")";
}

// A value of an amount or a whole number in ten-thousandths.
std::string ScaledSql(const TypedSql& raw) {
  if (raw.type == ValueType::kStoredCurrency) return raw.sql;
  return "jet_scaled(" + raw.sql + ")";
}

// Sums, differences and products of amounts and whole numbers are exact amounts, so that 0.1 + 0.2
// is 0.3; no text for any other operator.
TypedSql Amount(Operator op, const TypedSql& a, const TypedSql& b) {
  TypedSql amount{{}, ValueType::kStoredCurrency};
  if (op == Operator::kAdd || op == Operator::kSubtract) {
    amount.sql =
        "jet_amount(" + ScaledSql(a) + (op == Operator::kAdd ? " + " : " - ") + ScaledSql(b) + ")";
  } else if (op == Operator::kMultiply) {
    amount.sql = CallSql("jet_amount_product", ScaledSql(a), ScaledSql(b));
  }
  return amount;
}

// True when every value of the column is one of the field as it lies; Null may come from any
// column, through an outer join too.
bool IsCopy(const TypedSql& raw, const Target& target) {
  if (raw.field == nullptr || target.required || target.in_primary_key) return false;
  const Target& source = raw.field->target;
  if (source.type != target.type || target.type == ports::DataType::kBoolean) return false;
  if (target.allow_zero_length < source.allow_zero_length) return false;
  const bool has_size =
      target.type == ports::DataType::kText || target.type == ports::DataType::kBinary;
  return !has_size || source.size <= target.size;
}

}  // namespace

std::string TypeCode(ValueType type) {
  return std::to_string(static_cast<std::int32_t>(type));
}

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

std::string NumberSql(const TypedSql& value) {
  if (IsNumeric(value.type) || value.type == ValueType::kNull) return value.sql;
  return "jet_number(" + value.sql + ")";
}

std::string TextSql(const TypedSql& value) {
  if (value.type == ValueType::kText || value.type == ValueType::kNull) return value.sql;
  // A column of whole numbers holds nothing else.
  if (value.type == ValueType::kInteger && value.field != nullptr)
    return "CAST(" + value.sql + " AS TEXT)";
  return CallSql("jet_text", value.sql, TypeCode(value.type));
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

TypedSql Decoded(const TypedSql& raw) {
  if (raw.type == ValueType::kStoredCurrency)
    return {"(" + raw.sql + "/10000.0)", ValueType::kCurrency};
  if (raw.type == ValueType::kStoredGuid) return {"jet_guid(" + raw.sql + ")", ValueType::kText};
  return raw;
}

std::string_view CollationOf(ValueType type) {
  return type == ValueType::kText || type == ValueType::kUnknown ? " COLLATE JET" : "";
}

TypedSql ExpressionTranslator::Value(const Expression& expression) {
  return Decoded(Raw(expression));
}

// What the rows are grouped by is no lone field, however it is made up.
TypedSql ExpressionTranslator::Raw(const Expression& expression) {
  const bool met_before = met_lone_field_;
  TypedSql raw = Untested(expression);
  if (raw.sql.size() > kMostSql) Fail(kTooComplex);
  if (groups_ != nullptr && std::find(groups_->begin(), groups_->end(), raw.sql) != groups_->end())
    met_lone_field_ = met_before;
  return raw;
}

TypedSql ExpressionTranslator::Untested(const Expression& expression) {
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
      return {TextLiteral(expression.text), ValueType::kText, nullptr, true};
    case ExpressionKind::kName:
      return Name(expression);
    case ExpressionKind::kUnary:
      return Unary(expression);
    case ExpressionKind::kBinary:
      return Binary(expression);
    case ExpressionKind::kCall:
      return Call(expression);
    case ExpressionKind::kSubquery:
      return Subquery(expression);
    default:
      Fail(kSyntaxInExpression, "здесь нужно значение", TextOf(expression));
  }
}

TypedSql ExpressionTranslator::Name(const Expression& expression) {
  const Scope::Found found = scope_.Find(expression.qualifier, expression.text);
  if (found.column == nullptr) {
    if (const Expression* const meant = Aliased(expression)) {
      if (++alias_depth_ > kMostAliasDepth) Fail(kCircularAlias, expression.text);
      TypedSql value = Raw(*meant);
      --alias_depth_;
      return value;
    }
    const bool is_qualified = !expression.qualifier.empty();
    scope_.NoteUnknown(is_qualified ? expression.qualifier + "." + expression.text
                                    : expression.text);
    return {"NULL", ValueType::kUnknown};
  }
  (found.is_outer ? met_outer_field_ : met_own_field_) = true;
  if (!in_aggregate_ && !found.is_outer) met_lone_field_ = true;
  return {found.table->Sql(*found.column), found.column->type, found.column->field};
}

const Expression* ExpressionTranslator::Aliased(const Expression& name) const {
  if (aliases_ == nullptr || !name.qualifier.empty()) return nullptr;
  for (const OutputItem& item : *aliases_) {
    if (item.expression && tmw::EqualIgnoringCase(item.alias, name.text))
      return item.expression.get();
  }
  return nullptr;
}

TypedSql ExpressionTranslator::Unary(const Expression& expression) {
  const TypedSql operand = Value(*expression.arguments[0]);
  const ValueType type = Wider(operand.type, ValueType::kInteger);
  if (expression.op == Operator::kPlusSign) return {NumberSql(operand), type};
  return Checked({"(-" + NumberSql(operand) + ")", type});
}

TypedSql ExpressionTranslator::Binary(const Expression& expression) {
  const TypedSql raw_a = Raw(*expression.arguments[0]);
  const TypedSql raw_b = Raw(*expression.arguments[1]);
  const TypedSql a = Decoded(raw_a);
  const TypedSql b = Decoded(raw_b);
  if (Wider(a.type, b.type) == ValueType::kCurrency) {
    TypedSql amount = Amount(expression.op, raw_a, raw_b);
    if (!amount.sql.empty()) return amount;
  }
  switch (expression.op) {
    case Operator::kConcatenate:
      return Concatenation(a, b);
    case Operator::kDivide:
      return {CallSql("jet_divide", NumberSql(a), NumberSql(b)), ValueType::kNumber};
    case Operator::kIntegerDivide:
      return {CallSql("jet_whole_divide", NumberSql(a), NumberSql(b)), ValueType::kInteger};
    case Operator::kModulo:
      return {CallSql("jet_modulo", NumberSql(a), NumberSql(b)), ValueType::kInteger};
    case Operator::kPower:
      return {CallSql("jet_power", NumberSql(a), NumberSql(b)), ValueType::kNumber};
    case Operator::kMultiply:
      return Checked({"(" + NumberSql(a) + " * " + NumberSql(b) + ")", Wider(a.type, b.type)});
    default:
      return Sum(a, expression.op == Operator::kAdd, b);
  }
}

// Null counts as an empty text unless both are Null.
TypedSql ExpressionTranslator::Concatenation(const TypedSql& a, const TypedSql& b) {
  if (!a.is_present && !b.is_present)
    return {CallSql("jet_join", TextSql(a), TextSql(b)), ValueType::kText};
  const auto present = [](const TypedSql& value) {
    return value.is_present ? value.sql : CallSql("ifnull", TextSql(value), "''");
  };
  return {"(" + present(a) + " || " + present(b) + ")", ValueType::kText, nullptr, true};
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
  return Checked({"(" + NumberSql(a) + (is_sum ? " + " : " - ") + NumberSql(b) + ")", type});
}

std::string ExpressionTranslator::Assigned(const Expression& expression, const FieldInfo& field) {
  return Assigned(Raw(expression), field);
}

std::string ExpressionTranslator::Assigned(const TypedSql& raw, const FieldInfo& field) {
  const Target& target = field.target;
  if (IsCopy(raw, target)) return raw.sql;
  // An amount that is only copied keeps all its digits.
  const TypedSql value = raw.type == ValueType::kStoredCurrency ? raw : Decoded(raw);
  const int flags = (target.required ? 1 : 0) | (target.allow_zero_length ? 2 : 0) |
                    (target.in_primary_key ? 4 : 0);
  return "jet_to(" + value.sql + ", " + TypeCode(value.type) + ", " +
         std::to_string(static_cast<std::int32_t>(target.type)) + ", " +
         std::to_string(target.size) + ", " + std::to_string(flags) + ", " +
         TextLiteral(target.name) + ")";
}

}  // namespace jet::sql
