#pragma once

#include <string_view>

#include "jet/sql/action_plan.h"
#include "jet/sql/ast.h"
#include "jet/table_info.h"

namespace jet::sql {

ActionPlan TranslateInsert(const Insert& insert, TableFinder& tables, std::string_view statement);

// The table that SELECT … INTO makes, and what fills it once it is there.
ports::TableDefinition TranslateIntoTable(const Select& select, TableFinder& tables,
                                          std::string_view statement);
ActionPlan TranslateIntoRows(const Select& select, TableFinder& tables, std::string_view statement);

}  // namespace jet::sql
