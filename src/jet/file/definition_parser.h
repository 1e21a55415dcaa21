#pragma once

#include "jet/file/definition_chain.h"
#include "jet/file/table_layout.h"

namespace jet::file {

// Throws Damage where the blocks contradict each other or do not end with the definition. The
// result may be trusted: every index names columns that exist, every slot lies inside the record.
TableLayout ParseDefinition(const DefinitionChain& chain);

}  // namespace jet::file
