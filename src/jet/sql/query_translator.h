#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/value_type.h"
#include "jet/table_info.h"

// Turns parsed queries into the storage's SQL. Statements over several tables, sub-selects, groups
// and the rest of the dialect are refused by name (3251).
namespace jet::sql {

struct OutputColumn {
  std::string name;
  const FieldInfo* field = nullptr;  // of the plan's table; null for a computed value
  ValueType type = ValueType::kUnknown;
};

// How a SELECT statement's rows are read.
struct SelectPlan {
  TablePtr table;
  std::vector<OutputColumn> columns;
  // Rows of one table: the row numbers in order, then each row's values by its number (parameter
  // 1).
  std::string keys_sql;
  std::string row_sql;
  // Rows that belong to no row of a table (totals): all at once; the two above are empty then.
  std::string rows_sql;
};

SelectPlan TranslateSelect(const Select& select, TableFinder& tables, std::string_view statement);

// A plan for all rows of a table: by that index, or in storage order when it is null.
SelectPlan PlanTable(TablePtr table, const IndexInfo* index);

// An action query: one statement of the storage's SQL, and the table it changes.
struct ActionPlan {
  TablePtr table;
  std::string sql;
};

ActionPlan TranslateInsert(const Insert& insert, TableFinder& tables, std::string_view statement);
ActionPlan TranslateUpdate(const Update& update, TableFinder& tables, std::string_view statement);
ActionPlan TranslateDelete(const Delete& statement, TableFinder& tables, std::string_view text);

// The value of a field's default expression, converted for the field.
std::string TranslateDefault(const FieldInfo& field);

}  // namespace jet::sql
