#pragma once

#include <string_view>

#include "jet/sql/action_plan.h"
#include "jet/sql/ast.h"
#include "jet/table_info.h"

namespace jet::sql {

ActionPlan TranslateInsert(const Insert& insert, TableFinder& tables, std::string_view statement);

// SELECT … INTO: the table to create, then the statements that fill it.
ports::TableDefinition TranslateIntoTable(const Select& select, TableFinder& tables,
                                          std::string_view statement);
ActionPlan TranslateIntoRows(const Select& select, TableFinder& tables, std::string_view statement);

}  // namespace jet::sql
