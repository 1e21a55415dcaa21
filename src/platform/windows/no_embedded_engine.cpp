#include "platform/windows/embedded_engine.h"

namespace platform {

std::unique_ptr<ports::DatabaseEngine> MakeEmbeddedEngineIfNamed() {
  return nullptr;
}

}  // namespace platform
