#pragma once

#include <string_view>

#include "jet/sql/action_plan.h"
#include "jet/sql/ast.h"
#include "jet/table_info.h"

namespace jet::sql {

ActionPlan TranslateUpdate(const Update& update, TableFinder& tables, std::string_view statement);
ActionPlan TranslateDelete(const Delete& statement, TableFinder& tables, std::string_view text);

}  // namespace jet::sql
