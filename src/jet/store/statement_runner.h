#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "jet/sql/query_translator.h"
#include "jet/store/session.h"

namespace jet {

// Runs one action statement of the dialect as a whole; the number of rows it touched.
std::int64_t RunStatement(Session& session, const std::string& text);

// The plan of a SELECT statement's rows. 3219 for an action statement.
sql::SelectPlan PlanSelect(Session& session, const std::string& text);

}  // namespace jet
