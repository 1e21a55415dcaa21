#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/select_translator.h"
#include "jet/table_info.h"

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

}  // namespace jet::sql
