#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace jetsql {

// The command line is wrong; what() says how.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Runs the command that the arguments name (without the program's own name).
void RunCommand(const std::vector<std::string>& arguments);

}  // namespace jetsql
