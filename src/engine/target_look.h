#pragma once

#include "engine/records.h"
#include "product/obstacles.h"

namespace tmw {

// The mark of the installation, the files that need an update with what goes with them, the
// product's root and, unless on a client, the databases and the scripts that the product keeps.
LookPlan PlanLook(const Manifest& manifest, bool is_client);

}  // namespace tmw
