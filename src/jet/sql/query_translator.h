#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/select_translator.h"
#include "jet/table_info.h"

namespace jet::sql {

// How to read the rows of a SELECT statement.
struct SelectPlan {
  TablePtr table;  // null if the rows are not those of one table
  std::vector<TablePtr> all_tables;
  std::vector<OutputColumn> columns;
  // For rows of one table: the row numbers in order, and the values of the row numbered ?1.
  std::string keys_sql;
  std::string row_sql;
  // For any other rows, which are read all at once; the two above are empty then.
  std::string rows_sql;
};

SelectPlan TranslateSelect(const Select& select, TableFinder& tables, std::string_view statement);

// All rows of a table in the order of the index, or in storage order if it is null.
SelectPlan PlanTable(TablePtr table, const IndexInfo* index);

}  // namespace jet::sql
