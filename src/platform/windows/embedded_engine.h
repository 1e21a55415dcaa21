#pragma once

#include <memory>

#include "ports/database.h"

namespace platform {

// The embedded engine, if this program has it and a variable names it, else nothing. What users get
// has only DAO and is linked with no_embedded_engine.cpp; the tests and the maker's tools are
// linked with the other definition.
std::unique_ptr<ports::DatabaseEngine> MakeEmbeddedEngineIfNamed();

}  // namespace platform
