#include "platform/factories.h"

#include "jet/engine.h"
#include "ports/database.h"

namespace platform {

std::unique_ptr<ports::DatabaseEngine> MakeDatabaseEngine() {
  return jet::MakeEngine();
}

}  // namespace platform
