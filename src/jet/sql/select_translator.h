#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/scope.h"
#include "jet/values/value_type.h"

namespace jet::sql {

struct OutputColumn {
  std::string name;
  const FieldInfo* field = nullptr;      // null for a computed column
  ValueType type = ValueType::kUnknown;  // raw
};

// A SELECT in the storage's SQL. The columns are named o0, o1 …
struct SelectSql {
  std::string sql;
  std::vector<OutputColumn> columns;
  bool is_computed = false;  // rows are groups or otherwise not rows of tables
  bool is_one_row = false;   // totals over all rows
  // If the rows are those of a single table: the table, and the statements for the row numbers in
  // order and for the values of the row numbered ?1.
  TablePtr table;
  std::string keys_sql;
  std::string row_sql;
};

enum class RowOrder { kAny, kKept };

// The scope is a new one, inside or beside that of the enclosing query.
SelectSql TranslateNested(const Select& select, Scope scope, std::string_view statement,
                          RowOrder order);

// One part of a UNION, without the order that the first part holds for all of them.
SelectSql TranslatePart(const Select& part, Scope scope, std::string_view statement);

}  // namespace jet::sql
