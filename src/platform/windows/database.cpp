#include "ports/database.h"
#include "platform/factories.h"
#include "platform/windows/dao/dao_engine.h"
#include "platform/windows/embedded_engine.h"

namespace platform {

std::unique_ptr<ports::DatabaseEngine> MakeDatabaseEngine() {
  auto embedded = MakeEmbeddedEngineIfNamed();
  return embedded ? std::move(embedded) : std::make_unique<DaoEngine>();
}

}  // namespace platform
