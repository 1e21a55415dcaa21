#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/scope.h"
#include "jet/sql/typed_sql.h"

namespace jet::sql {

// Turns expressions into the storage's SQL: names are looked up in the scope, and the static types
// decide how values are compared, joined and computed.
class ExpressionTranslator {
 public:
  // The statement's text is quoted in errors.
  ExpressionTranslator(Scope& scope, std::string_view statement)
      : scope_(scope), statement_(statement) {}

  const Scope& InScope() const { return scope_; }
  std::string_view Statement() const { return statement_; }
  std::string_view TextOf(const Expression& expression) const;

  TypedSql Value(const Expression& expression);  // decoded
  TypedSql Raw(const Expression& expression);
  // 1, 0 or Null, for WHERE and the like.
  std::string Condition(const Expression& expression);
  // The value converted for a field, with the field's demands checked.
  std::string Assigned(const Expression& expression, const FieldInfo& field);

  // From here on the rows are groups by these raw values: totals are allowed, and a field outside
  // of them and of the groups shows in MetLoneField.
  void GroupBy(const std::vector<std::string>& groups) { groups_ = &groups; }
  bool MetLoneField() const { return met_lone_field_; }
  // Fails with 3096 for a call of a total where none is allowed.
  void RequireGroups(const Expression& call) const;
  // The raw value that a total sums up.
  TypedSql TotalArgument(const Expression& call);

  // Unknown names may mean the alias of one of these outputs.
  void AllowAliases(const std::vector<OutputItem>& items) { aliases_ = &items; }

 private:
  TypedSql Ungrouped(const Expression& expression);
  TypedSql Name(const Expression& expression);
  const Expression* Aliased(const Expression& name) const;

  Scope& scope_;
  std::string_view statement_;
  const std::vector<std::string>* groups_ = nullptr;
  const std::vector<OutputItem>* aliases_ = nullptr;
  int alias_depth_ = 0;
  bool met_lone_field_ = false;
  bool met_outer_field_ = false;
  bool met_own_field_ = false;
  bool in_total_ = false;
};

}  // namespace jet::sql
