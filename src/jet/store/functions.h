#pragma once

#include <cstdint>

#include "jet/store/autonumbers.h"
#include "jet/store/sqlite.h"

namespace jet {

// What the storage's engine calls back while it runs a translated statement; both outlive it.
struct FunctionContext {
  Connection& connection;
  Autonumbers& autonumbers;
  std::uint32_t random_state = 0x50000;  // of Rnd; every database begins alike
};

// Makes the collation JET and the functions jet_… known to the connection.
void RegisterFunctions(FunctionContext& context);

}  // namespace jet
