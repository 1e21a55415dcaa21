#pragma once

#include <string>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/scope.h"
#include "jet/sql/select_translator.h"

namespace jet::sql {

struct Output {
  TypedSql raw;
  std::string name;
  const ScopeTable* table = nullptr;  // of a plain field without an alias
};

// The columns of one SELECT: its items, with "*" expanded.
class OutputList {
 public:
  OutputList(const Scope& scope, ExpressionTranslator& translator)
      : scope_(scope), translator_(translator) {}

  void Add(const OutputItem& item);
  // Qualifies fields of the same name from several tables, as "a.Имя".
  void QualifyNames();

  const std::vector<Output>& Items() const { return items_; }
  bool MetStar() const { return met_star_; }
  std::vector<OutputColumn> Columns() const;
  // "a0.c1 AS o0, …", with collations if the values are compared.
  std::string Sql(bool are_compared) const;

 private:
  void AddStar(const std::string& qualifier);
  void AddExpression(const OutputItem& item);
  void Put(Output output);

  const Scope& scope_;
  ExpressionTranslator& translator_;
  std::vector<Output> items_;
  bool met_star_ = false;
  int unnamed_ = 0;
};

}  // namespace jet::sql
