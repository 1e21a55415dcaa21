#include "platform/database.h"

#include "jet/engine.h"

namespace platform {

std::unique_ptr<DatabaseEngine> MakeDatabaseEngine() {
  return jet::MakeEngine();
}

}  // namespace platform
