#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/scope.h"
#include "jet/sql/typed_sql.h"

namespace jet::sql {

// Translates expressions into the storage's SQL. Names are looked up in the scope; the static types
// decide how values are compared and computed.
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
  // The value converted for a field, the field's constraints checked.
  std::string Assigned(const Expression& expression, const FieldInfo& field);

  // From here on rows are grouped by these raw values: totals are allowed, and MetLoneField reports
  // a field that is neither within a total nor grouped by.
  void GroupBy(const std::vector<std::string>& groups) { groups_ = &groups; }
  bool MetLoneField() const { return met_lone_field_; }
  // Fails with 3096 if no total is allowed here.
  void RequireGroups(const Expression& call) const;
  // The raw argument of a total.
  TypedSql TotalArgument(const Expression& call);

  // Names that are not fields may be aliases of these outputs.
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
