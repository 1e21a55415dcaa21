#include "platform/factories.h"

#include <cstdlib>
#include <string_view>

#include "jet/engine.h"
#include "platform/windows/dao/dao_engine.h"
#include "ports/database.h"

namespace platform {
namespace {

// Names the embedded engine in tests; users' machines have DAO.
constexpr const char* kEngineVariable = "TMW_TEST_DATABASE_ENGINE";

bool IsEmbeddedNamed() {
  const char* const value = std::getenv(kEngineVariable);
  return value != nullptr && std::string_view(value) == "embedded";
}

}  // namespace

std::unique_ptr<ports::DatabaseEngine> MakeDatabaseEngine() {
  if (IsEmbeddedNamed()) return jet::MakeEngine();
  return std::make_unique<DaoEngine>();
}

}  // namespace platform
