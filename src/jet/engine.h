#pragma once

#include <memory>

#include "ports/database.h"

namespace jet {

// The embedded database engine. Its databases are storage files of its own.
std::unique_ptr<ports::DatabaseEngine> MakeEngine();

}  // namespace jet
