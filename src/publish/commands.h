#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace publish {

// The command line is wrong; what() says how.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What a command comes to; the process's exit codes.
enum ExitCode {
  kDone = 0,
  kFaultsFound = 1,
  kWrongUsage = 2,
  kFailed = 3,
};

// How the command is used, or every command when the name is none's.
std::string HelpFor(const std::string& command);

// Runs the command that the arguments name (without the program's own name) and prints what it has
// to say.
ExitCode RunCommand(std::vector<std::string> arguments);

}  // namespace publish
