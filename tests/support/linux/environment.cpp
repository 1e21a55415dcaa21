#include "tests/support/environment.h"

#include <cstdlib>

namespace tests {

ScopedVariable::ScopedVariable(const std::string& name, const std::string& value) : name_(name) {
  const char* const old = std::getenv(name.c_str());
  if (old != nullptr) saved_ = old;
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
