#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "foundation/command_line.h"
#include "ports/processes.h"

namespace tests {

// Thrown where the real port would end the process.
struct ProcessEnded : std::runtime_error {
  ProcessEnded() : std::runtime_error("the process ended") {}
};

// Starts nothing: records every start as "program|command line|folder" and hands back a process
// that has ended with exit_code.
class RecordingProcesses : public ports::Processes {
 public:
  std::vector<std::string> starts;
  std::string own_arguments;
  std::string own_program = "TmWebUpdate";
  std::int32_t exit_code = 0;
  // When set, plain starts are refused with the first code for lack of rights, elevated ones with
  // the second.
  std::optional<std::pair<ports::SystemCode, ports::SystemCode>> refusals;
  std::function<void()> on_start;
  int waits = 0;                 // for processes to end
  std::int32_t ended_with = -1;  // this process
  bool can_gain_rights = false;
  ports::StartRequest last_start;
  ports::ElevatedStartRequest last_elevated_start;

  ports::Outcome<std::unique_ptr<ports::Process>> Start(
      const ports::StartRequest& request) override {
    starts.push_back(request.program + "|" + request.command_line + "|" + request.working_folder);
    last_start = request;
    if (on_start) on_start();
    if (refusals) return {false, refusals->first, nullptr};
    return {true, 0, std::make_unique<EndedProcess>(*this)};
  }

  ports::Outcome<std::unique_ptr<ports::Process>> StartElevated(
      const ports::ElevatedStartRequest& request) override {
    starts.push_back("elevated " + request.program + "|" + request.parameters + "|" +
                     request.working_folder);
    last_elevated_start = request;
    if (refusals) return {false, refusals->second, nullptr};
    return {true, 0, std::make_unique<EndedProcess>(*this)};
  }

  bool CanGainRights() const override { return can_gain_rights; }
  bool NeedsElevation(ports::SystemCode code, const ports::StartRequest&) const override {
    return refusals && code == refusals->first;
  }
  std::string OwnArguments() const override { return own_arguments; }
  std::vector<std::string> OwnArgumentList() const override {
    return tmw::SplitCommandLine(own_arguments);
  }
  std::string OwnProgram() const override { return own_program; }
  std::string ProgramEnding() const override { return ".exe"; }
  bool HasTerminal() const override { return false; }
  bool PrintsToTerminal() const override { return false; }
  ports::Status Terminate(std::int32_t code) override {
    ended_with = code;
    throw ProcessEnded();
  }

 private:
  class EndedProcess final : public ports::Process {
   public:
    explicit EndedProcess(RecordingProcesses& starter)
        : starter_(starter), exit_code_(starter.exit_code) {}
    std::int32_t Id() const override { return 4711; }
    ports::Outcome<bool> Wait(std::int32_t) override {
      ++starter_.waits;
      return {true, 0, true};
    }
    ports::Status Kill() override { return ports::Status::Success(); }
    ports::Outcome<std::int32_t> ExitCode() override { return {true, 0, exit_code_}; }

   private:
    RecordingProcesses& starter_;
    std::int32_t exit_code_;
  };
};

}  // namespace tests
