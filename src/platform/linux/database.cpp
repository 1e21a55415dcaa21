#include "platform/factories.h"

#include "jet/engine.h"

namespace platform {

std::unique_ptr<ports::DatabaseEngine> MakeDatabaseEngine() {
  return jet::MakeEngine();
}

}  // namespace platform
