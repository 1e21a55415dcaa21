#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/scope.h"

namespace jet::sql {

// Translates FROM clauses and adds their tables to the scope.
class SourceTranslator {
 public:
  SourceTranslator(Scope& scope, std::string_view statement)
      : scope_(scope), statement_(statement) {}

  // "t3 AS a0 JOIN t5 AS a1 ON …"
  std::string Sources(const std::vector<SourcePtr>& sources);
  // True if a sub-select among them yields rows that are not rows of a table.
  bool MetComputedRows() const { return met_computed_rows_; }
  bool MetOuterJoin() const { return met_outer_join_; }

 private:
  std::string One(const Source& source, bool is_nested);
  std::string Join(const Source& join, bool is_nested);
  std::string Leaf(const Source& source, bool is_nested);

  Scope& scope_;
  std::string_view statement_;
  bool met_computed_rows_ = false;
  bool met_outer_join_ = false;
};

}  // namespace jet::sql
