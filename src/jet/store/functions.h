#pragma once

#include <cstdint>

#include "jet/store/autonumbers.h"
#include "jet/store/sqlite.h"

namespace jet {

// What functions use while a statement runs. Both objects must outlive the connection's statements.
struct FunctionContext {
  Connection& connection;
  Autonumbers& autonumbers;
  std::uint32_t random_state = 0x50000;  // of Rnd; the same for every newly opened database
};

// Registers the collation and the functions of storage_sql.h with the connection.
void RegisterFunctions(FunctionContext& context);

}  // namespace jet
