#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/outcome.h"

namespace ports {

struct StartRequest {
  std::string program;         // empty: the first word of the command line
  std::string command_line;    // whole line, the program's name first; empty: the program alone
  std::string working_folder;  // empty: the caller's
  bool feedback_on = false;    // forced feedback cursor on / off (Windows)
  bool feedback_off = false;
  std::optional<std::uint16_t> show_window;  // a show-window command (Windows)
  // What the program prints goes to this file, which is created anew, and it has nothing to read; a
  // path that does not depend on the working folder. Empty: the streams are inherited.
  std::string output_file;
  // The started program takes this updater's place: on Linux the process that waits for the
  // whole chain waits for it too.
  bool continues_chain = false;
};

struct ElevatedStartRequest {
  std::string program;         // may stand in double quotes
  std::string parameters;      // without the program
  std::string working_folder;  // empty: none
  bool continues_chain = false;
};

// A started process. Destroying it does not end the process.
class Process {
 public:
  virtual ~Process() = default;

  virtual std::int32_t Id() const = 0;

  // Waits up to that many milliseconds; true when the process has ended, false on a timeout.
  virtual Outcome<bool> Wait(std::int32_t milliseconds) = 0;

  // Ends it at once; a process with an output file together with all that it has started. Nothing
  // to do for one that has ended.
  virtual Status Kill() = 0;

  // Valid once Wait has given true. Linux: a process ended by signal n has the code 128 + n.
  virtual Outcome<std::int32_t> ExitCode() = 0;
};

// Programs and this process itself. A program inherits the environment and, on Linux, the standard
// streams, but no other handle. A program that is given is taken as a path; the first word of a
// command line is searched for as the system does.
class Processes {
 public:
  virtual ~Processes() = default;

  virtual Outcome<std::unique_ptr<Process>> Start(const StartRequest& request) = 0;

  // Through the shell's "runas" on Windows, pkexec on Linux; returns when the user has decided. A
  // refusal is a failure.
  virtual Outcome<std::unique_ptr<Process>> StartElevated(const ElevatedStartRequest& request) = 0;

  // Whether this process lacks administrator rights and StartElevated can ask somebody for them.
  // Linux: from a terminal with pkexec only, since a program with other rights has no display.
  virtual bool CanGainRights() const = 0;

  // True for the code of a start that was refused because the program needs administrator rights.
  virtual bool NeedsElevation(SystemCode code, const StartRequest& request) const = 0;

  // The arguments this process was started with, without the program: the raw tail of the command
  // line on Windows; on Linux rebuilt so that SplitCommandLine gives the same list again, and Start
  // the empty arguments too.
  virtual std::string OwnArguments() const = 0;

  // The same as a list: on Windows as SplitCommandLine gives it; on Linux as this process was given
  // them, empty ones too.
  virtual std::vector<std::string> OwnArgumentList() const = 0;

  // The path of this program's file, absolute.
  virtual std::string OwnProgram() const = 0;

  // What the file name of a program ends with: ".exe" on Windows, nothing on Linux.
  virtual std::string ProgramEnding() const = 0;

  // Whether somebody may be watching standard error.
  virtual bool HasTerminal() const = 0;

  // Whether standard output goes to a terminal.
  virtual bool PrintsToTerminal() const = 0;

  // Ends this process at once, without any clean-up. Returns only when that failed.
  virtual Status Terminate(std::int32_t exit_code) = 0;
};

}  // namespace ports
