#include "tests/support/environment.h"

#include <cstdlib>

namespace tests {

std::optional<std::string> Variable(const std::string& name) {
  const char* const value = std::getenv(name.c_str());
  if (value == nullptr) return std::nullopt;
  return value;
}

ScopedVariable::ScopedVariable(const std::string& name, const std::string& value)
    : name_(name), saved_(Variable(name)) {
  setenv(name.c_str(), value.c_str(), 1);
}

ScopedVariable::~ScopedVariable() {
  if (saved_) {
    setenv(name_.c_str(), saved_->c_str(), 1);
  } else {
    unsetenv(name_.c_str());
  }
}

}  // namespace tests
