#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tests {

inline constexpr bool kOnWindows = std::filesystem::path::preferred_separator == '\\';

// The value of an environment variable; nothing if it is not set.
std::optional<std::string> Variable(const std::string& name);

// An environment variable of this process and those it starts, restored at the end of the scope.
class ScopedVariable {
 public:
  ScopedVariable(const std::string& name, const std::string& value);
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable();

 private:
  std::string name_;
  std::optional<std::string> saved_;  // none if it was not set
};

}  // namespace tests
