#pragma once

#include <cstdint>
#include <string>

#include "jet/sql/query_translator.h"
#include "jet/store/session.h"

namespace jet {

// Runs one action statement as a whole and returns the number of rows changed.
std::int64_t RunStatement(Session& session, const std::string& text);

// Fails with 3219 for an action statement.
sql::SelectPlan PlanSelect(Session& session, const std::string& text);

}  // namespace jet
