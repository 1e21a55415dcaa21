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
  const FieldInfo* field = nullptr;      // a field's values; null for computed ones
  ValueType type = ValueType::kUnknown;  // as the storage hands it over
};

// A SELECT in the storage's SQL. The columns are called o0, o1 …
struct SelectSql {
  std::string sql;
  std::vector<OutputColumn> columns;
  bool is_computed = false;  // the rows are groups or otherwise no rows of tables
  bool is_one_row = false;   // totals of everything
  // When each row is one of a single stored table: that table, and what gives the row numbers in
  // order and the values of the row numbered ?1.
  TablePtr table;
  std::string keys_sql;
  std::string row_sql;
};

enum class RowOrder { kAny, kKept };

// The scope is a fresh one, inside or beside that of the query around.
SelectSql TranslateNested(const Select& select, Scope scope, std::string_view statement,
                          RowOrder order);

// One part of a UNION; the order that the first part holds is the whole's.
SelectSql TranslatePart(const Select& part, Scope scope, std::string_view statement);

}  // namespace jet::sql
