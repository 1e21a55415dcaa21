#include "foundation/error_environment.h"

#include <utility>

namespace tmw {
namespace {

ErrorEnvironment& Environment() {
  static ErrorEnvironment environment;
  return environment;
}

}  // namespace

ErrorEnvironment SetErrorEnvironment(ErrorEnvironment environment) {
  return std::exchange(Environment(), std::move(environment));
}

const ErrorEnvironment& CurrentErrorEnvironment() {
  return Environment();
}

}  // namespace tmw
