#pragma once

#include <string>
#include <string_view>

#include "jet/sql/ast.h"
#include "jet/sql/scope.h"
#include "jet/sql/value_type.h"

namespace jet::sql {

struct TypedSql {
  std::string sql;
  ValueType type = ValueType::kUnknown;
};

// Turns expressions into the storage's SQL: names are looked up in the scope, and the static types
// decide how values are compared, joined and computed.
class ExpressionTranslator {
 public:
  // The statement's text is quoted in errors.
  ExpressionTranslator(Scope& scope, std::string_view statement)
      : scope_(scope), statement_(statement) {}

  // The expression's value.
  TypedSql Value(const Expression& expression);

  // 1, 0 or Null, for WHERE and the like.
  std::string Condition(const Expression& expression);

  // The value converted for a field, with the field's demands checked.
  std::string Assigned(const Expression& expression, const FieldInfo& field);

  // Aggregates are refused unless allowed; tells whether one was met since.
  void AllowAggregates() { allows_aggregates_ = true; }
  bool MetAggregate() const { return met_aggregate_; }
  bool MetLoneField() const { return met_lone_field_; }

  std::string_view TextOf(const Expression& expression) const;

 private:
  TypedSql Name(const Expression& expression);
  TypedSql Unary(const Expression& expression);
  TypedSql Binary(const Expression& expression);
  static TypedSql Sum(const TypedSql& a, bool is_sum, const TypedSql& b);
  TypedSql Call(const Expression& expression);
  TypedSql CallImmediateIf(const Expression& expression);
  TypedSql CallAggregate(const Expression& expression, std::string_view sql_name, TypedSql result);
  std::string BinaryCondition(const Expression& expression);
  std::string Compare(const TypedSql& left, std::string_view op, const TypedSql& right,
                      const Expression& expression);
  std::string Between(const Expression& expression);
  std::string In(const Expression& expression);
  void CheckComparable(ValueType left, ValueType right, const Expression& expression) const;

  Scope& scope_;
  std::string_view statement_;
  bool allows_aggregates_ = false;
  bool met_aggregate_ = false;
  bool met_lone_field_ = false;
  bool in_aggregate_ = false;
};

// "=", "<>" …; empty for what is no comparison.
std::string_view ComparisonSymbol(Operator op);

// The value as a number: a text is read as one when the storage meets it.
std::string NumberSql(const TypedSql& value);
// The value as a text.
std::string TextSql(const TypedSql& value);

// A text as a literal of the storage's SQL.
std::string TextLiteral(std::string_view text);

}  // namespace jet::sql
