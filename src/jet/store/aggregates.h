#pragma once

#include "jet/store/sqlite.h"

namespace jet {

// Makes the totals that the storage's engine does not have known to the connection: jet_first and
// jet_last (value, row number), jet_only (value; 3354 for a second one), jet_var, jet_varp,
// jet_stdev and jet_stdevp.
void RegisterAggregates(Connection& connection);

}  // namespace jet
