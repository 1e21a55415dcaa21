#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/select_translator.h"
#include "jet/table_info.h"

// Turns parsed queries into the storage's SQL.
namespace jet::sql {

// How a SELECT statement's rows are read.
struct SelectPlan {
  TablePtr table;  // null when the rows are not those of one table
  std::vector<TablePtr> all_tables;
  std::vector<OutputColumn> columns;
  // Rows of one table: the row numbers in order, then each row's values by its number (parameter
  // 1).
  std::string keys_sql;
  std::string row_sql;
  // Rows of joins, groups and the like: all at once; the two above are empty then.
  std::string rows_sql;
};

SelectPlan TranslateSelect(const Select& select, TableFinder& tables, std::string_view statement);

// A plan for all rows of a table: by that index, or in storage order when it is null.
SelectPlan PlanTable(TablePtr table, const IndexInfo* index);

// An action query: statements of the storage's SQL to be run in order.
struct ActionPlan {
  std::vector<std::string> steps;
  std::size_t counted = 0;  // the step whose changes are the rows touched
};

ActionPlan TranslateInsert(const Insert& insert, TableFinder& tables, std::string_view statement);
ActionPlan TranslateUpdate(const Update& update, TableFinder& tables, std::string_view statement);
ActionPlan TranslateDelete(const Delete& statement, TableFinder& tables, std::string_view text);

// The table that SELECT … INTO makes, and what fills it once it is there.
ports::TableDefinition TranslateIntoTable(const Select& select, TableFinder& tables,
                                          std::string_view statement);
ActionPlan TranslateIntoRows(const Select& select, TableFinder& tables, std::string_view statement);

// The value of a field's default expression, converted for the field.
std::string TranslateDefault(const FieldInfo& field);

}  // namespace jet::sql
