#include "platform/windows/embedded_engine.h"

#include <cstdlib>
#include <string_view>

#include "jet/engine.h"

namespace platform {
namespace {

constexpr const char* kEngineVariable = "TMW_TEST_DATABASE_ENGINE";

}  // namespace

std::unique_ptr<ports::DatabaseEngine> MakeEmbeddedEngineIfNamed() {
  const char* const value = std::getenv(kEngineVariable);
  const bool is_named = value != nullptr && std::string_view(value) == "embedded";
  return is_named ? jet::MakeEngine() : nullptr;
}

}  // namespace platform
