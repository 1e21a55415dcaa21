#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/scope.h"
#include "jet/values/value_type.h"

namespace jet::sql {

struct ScalarFunction;

struct TypedSql {
  std::string sql;
  ValueType type = ValueType::kUnknown;
  const FieldInfo* field = nullptr;  // a plain column of a table has one
  bool is_present = false;           // a text that is never Null
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
  // The value as the storage has it: amounts and GUIDs that are only handed on keep their form.
  TypedSql Raw(const Expression& expression);

  // 1, 0 or Null, for WHERE and the like.
  std::string Condition(const Expression& expression);

  // The value converted for a field, with the field's demands checked.
  std::string Assigned(const Expression& expression, const FieldInfo& field);
  static std::string Assigned(const TypedSql& raw, const FieldInfo& field);

  // From here on the rows are groups by these raw values: totals are allowed, and a field outside
  // of them and of the groups shows in MetLoneField.
  void GroupBy(const std::vector<std::string>& groups) { groups_ = &groups; }
  bool MetLoneField() const { return met_lone_field_; }
  // Unknown names may mean the alias of one of these outputs.
  void AllowAliases(const std::vector<OutputItem>& items) { aliases_ = &items; }

  std::string_view TextOf(const Expression& expression) const;

 private:
  TypedSql Untested(const Expression& expression);
  TypedSql Name(const Expression& expression);
  const Expression* Aliased(const Expression& name) const;
  TypedSql Unary(const Expression& expression);
  TypedSql Binary(const Expression& expression);
  static TypedSql Concatenation(const TypedSql& a, const TypedSql& b);
  static TypedSql Sum(const TypedSql& a, bool is_sum, const TypedSql& b);
  TypedSql Call(const Expression& expression);
  TypedSql CallScalar(const Expression& expression, const ScalarFunction& function);
  TypedSql CallImmediateIf(const Expression& expression);
  TypedSql CallSwitch(const Expression& expression);
  TypedSql CallChoose(const Expression& expression);
  TypedSql CallAggregate(const Expression& expression, std::string_view sql_name);
  TypedSql AggregateArgument(const Expression& expression);
  std::string BinaryCondition(const Expression& expression);
  std::string Compare(const TypedSql& raw_left, std::string_view op, const TypedSql& raw_right,
                      const Expression& expression);
  std::string Between(const Expression& expression);
  std::string In(const Expression& expression);
  TypedSql Subquery(const Expression& expression);
  std::string Exists(const Expression& expression);
  std::string InSelect(const Expression& value, const Select& select, const Expression& where);
  std::string Quantified(const Expression& expression);
  void CheckComparable(ValueType left, ValueType right, const Expression& expression) const;

  Scope& scope_;
  std::string_view statement_;
  const std::vector<std::string>* groups_ = nullptr;
  const std::vector<OutputItem>* aliases_ = nullptr;
  int alias_depth_ = 0;
  bool met_lone_field_ = false;
  bool met_outer_field_ = false;
  bool met_own_field_ = false;
  bool in_aggregate_ = false;
};

// "=", "<>" …; empty for what is no comparison.
std::string_view ComparisonSymbol(Operator op);

// A raw value as expressions compute with it.
TypedSql Decoded(const TypedSql& raw);
// " COLLATE JET" for what may be a text.
std::string_view CollationOf(ValueType type);

// The type's number as the functions that convert values get it.
std::string TypeCode(ValueType type);
// The value as a number: a text is read as one when the storage meets it.
std::string NumberSql(const TypedSql& value);
// The value as a text.
std::string TextSql(const TypedSql& value);

// A text as a literal of the storage's SQL.
std::string TextLiteral(std::string_view text);

}  // namespace jet::sql
