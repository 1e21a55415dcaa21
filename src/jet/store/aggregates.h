#pragma once

#include "jet/store/sqlite.h"

namespace jet {

// Registers the totals of storage_sql.h.
void RegisterAggregates(Connection& connection);

}  // namespace jet
