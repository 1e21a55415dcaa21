#pragma once

#include <memory>

#include "platform/database.h"

namespace jet {

// The embedded database engine: databases are storage files of its own.
std::unique_ptr<platform::DatabaseEngine> MakeEngine();

}  // namespace jet
