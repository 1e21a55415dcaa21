#include "jet/sql/field_value.h"

#include "jet/sql/expression_translator.h"
#include "jet/sql/parser.h"
#include "jet/sql/scope.h"
#include "jet/storage_sql.h"

namespace jet::sql {
namespace {

// True if every value of the column suits the field unchanged. Any column may yield Null, through
// an outer join.
bool IsCopy(const TypedSql& raw, const Target& target) {
  if (raw.field == nullptr || target.required || target.in_primary_key) return false;
  const Target& source = raw.field->target;
  if (source.type != target.type || target.type == ports::DataType::kBoolean) return false;
  if (target.allow_zero_length < source.allow_zero_length) return false;
  if (target.type == ports::DataType::kDecimal && source.size != target.size) return false;
  const bool has_size =
      target.type == ports::DataType::kText || target.type == ports::DataType::kBinary;
  return !has_size || source.size <= target.size;
}

}  // namespace

void Assignments::Add(std::string_view column, std::string_view value) {
  Append(columns, column);
  Append(values, value);
}

std::string AssignedSql(const TypedSql& raw, const FieldInfo& field) {
  const Target& target = field.target;
  if (IsCopy(raw, target)) return raw.sql;
  // An amount or a decimal that is only copied must keep all its digits.
  const bool is_exact =
      raw.type == ValueType::kStoredCurrency || raw.type == ValueType::kStoredDecimal;
  const TypedSql value = is_exact ? raw : Decoded(raw);
  const std::int32_t flags = (target.required ? fn::kRequired : 0) |
                             (target.allow_zero_length ? fn::kTakesZeroLength : 0) |
                             (target.in_primary_key ? fn::kInPrimaryKey : 0);
  return CallSql(
      fn::kStore,
      {value.sql, TypeCode(value.type), std::to_string(static_cast<std::int32_t>(target.type)),
       std::to_string(target.size), std::to_string(flags), TextLiteral(target.name)});
}

std::string DefaultSql(const FieldInfo& field) {
  Scope scope;
  const std::string& text = field.definition.default_value;
  const ExpressionPtr expression = ParseExpression(text);
  std::string sql = ExpressionTranslator(scope, text).Assigned(*expression, field);
  scope.FailOnUnknown();
  return sql;
}

std::string OmittedSql(const TableInfo& table, const FieldInfo& field) {
  if (field.IsAutonumber()) return CallSql(fn::kNextNumber, {std::to_string(table.id)});
  if (!field.definition.default_value.empty()) return DefaultSql(field);
  const bool must_be_checked = field.target.required || field.target.in_primary_key;
  if (field.definition.type != ports::DataType::kBoolean && !must_be_checked) return {};
  return AssignedSql({"NULL", ValueType::kNull}, field);
}

}  // namespace jet::sql
