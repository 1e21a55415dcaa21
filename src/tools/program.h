#pragma once

#include <string>
#include <vector>

#include "tools/command_line.h"

namespace tools {

// Exit codes that all tools share; each has one of its own for a failure.
inline constexpr int kDone = 0;
inline constexpr int kWrongUsage = 2;

// A command-line tool.
struct Program {
  std::string name;
  std::string help_head;  // the help's first line
  std::string help_tail;  // the help's last lines, each with its end
  std::vector<Command> commands;
  bool has_json = false;  // every command takes kJsonOption
  int failed = 1;         // the exit code of a command that raises an error
};

inline constexpr const char* kJsonOption = "--json";

// Runs the command that this process's arguments name and gives the exit code. "--help" (with a
// command: only about it) and "--version" answer on standard output. A wrong command line and an
// error of the command are reported on standard error, and with --json on standard output too:
// {"error": TEXT}. Expects the ports to be set.
int RunProgram(const Program& program);

// The same for the given arguments.
int RunProgram(const Program& program, const std::vector<std::string>& arguments);

}  // namespace tools
