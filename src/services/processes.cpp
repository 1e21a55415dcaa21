#include "services/processes.h"

#include <cstddef>
#include <memory>

#include "foundation/api_errors.h"
#include "foundation/error_handling.h"
#include "foundation/text.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "services/run_log.h"

namespace tmw {
namespace {

constexpr const char* kModule = "mProcesses";
constexpr std::int32_t kWaitSliceMilliseconds = 500;

ports::StartRequest MakeRequest(const std::string& exe_name, const std::string& cmd_line,
                                const std::string& work_dir, std::int32_t flags) {
  ports::StartRequest request;
  request.program = exe_name;
  request.command_line = cmd_line;
  request.working_folder = work_dir;
  request.feedback_on = (flags & kForceFeedbackOn) != 0;
  request.feedback_off = (flags & kForceFeedbackOff) != 0;
  const std::int32_t show = (flags & kShowWindowMask) / kShowWindowUnit;
  if (show != 0) request.show_window = static_cast<std::uint16_t>(show);
  request.continues_chain = (flags & kContinuesChain) != 0;
  return request;
}

std::int32_t WaitForExitCode(ports::Process& process) {
  for (;;) {
    const auto ended = process.Wait(kWaitSliceMilliseconds);
    if (!ended) RaiseApiError(ended.code);
    if (ended.value) break;
    ports::CurrentPorts().front_end->RunPendingEvents();
  }
  const auto exit_code = process.ExitCode();
  return exit_code ? exit_code.value : 0;
}

std::int32_t RunElevated(std::string exe_name, std::string cmd_line, const std::string& work_dir,
                         bool wait, bool continues_chain) try {
  NormalizeExeNameAndCmdLine(exe_name, cmd_line);
  ports::ElevatedStartRequest request;
  request.program = exe_name;
  request.parameters = cmd_line;
  request.working_folder = work_dir;
  request.continues_chain = continues_chain;
  const auto started = ports::CurrentPorts().processes->StartElevated(request);
  if (!started) RaiseApiError(started.code);
  const std::int32_t result = wait ? WaitForExitCode(*started.value) : started.value->Id();
  LogEvent("elevated_program", {{"path", exe_name}, {wait ? "exit_code" : "process_id", result}});
  return result;
} catch (...) {
  ReRaiseError(kModule, "RunProcessInElevationMode", exe_name);
}

}  // namespace

// The frame names the program, because the description is only the system's text.
std::int32_t RunProcess(const std::string& exe_name, const std::string& cmd_line,
                        const std::string& work_dir, bool wait, std::int32_t flags) try {
  ports::Processes& processes = *ports::CurrentPorts().processes;
  const ports::StartRequest request = MakeRequest(exe_name, cmd_line, work_dir, flags);
  const auto started = processes.Start(request);
  if (!started) {
    if (processes.NeedsElevation(started.code, request))
      return RunElevated(exe_name, cmd_line, work_dir, wait, request.continues_chain);
    RaiseApiError(started.code);
  }
  const std::int32_t result = wait ? WaitForExitCode(*started.value) : started.value->Id();
  // The parameters of a program that is named may hold what nobody else is to read.
  LogEvent("program", {{"path", exe_name.empty() ? cmd_line : exe_name},
                       {wait ? "exit_code" : "process_id", result}});
  return result;
} catch (...) {
  ReRaiseError(kModule, "RunProcess", exe_name.empty() ? cmd_line : exe_name);
}

std::int32_t RunProcessInElevationMode(const std::string& exe_name, const std::string& cmd_line,
                                       const std::string& work_dir, bool wait, std::int32_t flags) {
  return RunElevated(exe_name, cmd_line, work_dir, wait, (flags & kContinuesChain) != 0);
}

std::string RestartLine(const std::string& program, const std::string& own_options) {
  const std::string received = ports::CurrentPorts().processes->OwnArguments();
  return Quoted(program) + " " + own_options + (received.empty() ? "" : " ") + received;
}

void NormalizeExeNameAndCmdLine(std::string& exe_name, std::string& cmd_line) try {
  cmd_line = Trim(cmd_line);
  bool is_inside_quotes = false;
  std::size_t blank = 0;
  for (; blank < cmd_line.size(); ++blank) {
    if (cmd_line[blank] == '"') is_inside_quotes = !is_inside_quotes;
    if (cmd_line[blank] == ' ' && !is_inside_quotes) break;
  }
  if (exe_name.empty()) exe_name = cmd_line.substr(0, blank);
  // A line without parameters is handed on whole, as a parameter: callers rely on it.
  if (blank < cmd_line.size()) cmd_line = Trim(cmd_line.substr(blank));
} catch (...) {
  ReRaiseError(kModule, "NormalizeExeNameAndCmdLine");
}

}  // namespace tmw
