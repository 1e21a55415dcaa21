#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>

#include "foundation/command_line.h"
#include "foundation/error_handling.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "ports/host.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "publish/commands.h"
#include "publish/json.h"
#include "publish/stop.h"

namespace {

// The second time the system's own way: at once.
void Stop(int number) {
  publish::is_stop_wanted = true;
  static_cast<void>(std::signal(number, SIG_DFL));
}

// Tells why nothing came of the command: people on standard error, machines besides in the answer.
void Complain(const std::string& text, bool is_json) {
  std::cerr << "tmpublish: " << text << '\n';
  if (!is_json) return;
  publish::JsonWriter json;
  json.Text("error", text);
  std::cout << json.Finish();
}

int Run(const std::vector<std::string>& arguments) {
  const auto has = [&](const char* option) {
    return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
  };
  if (has("--help") || has("-h")) {
    std::cout << publish::HelpFor(arguments[0]);
    return publish::kDone;
  }
  if (!arguments.empty() && arguments[0] == "--version") {
    std::cout << "tmpublish " << tmw::GetAppVersionString() << '\n';
    return publish::kDone;
  }
  try {
    const publish::ExitCode code = publish::RunCommand(arguments);
    std::cout.flush();
    return std::cout ? code : publish::kFailed;
  } catch (const publish::UsageError& error) {
    Complain(error.what() + std::string("; see tmpublish --help"), has("--json"));
    return publish::kWrongUsage;
  } catch (...) {
    const tmw::ProgramError error = tmw::CurrentError();
    Complain("error " + std::to_string(error.Number) + ": " +
                 tmw::TrimCharacters(error.Description, tmw::kCrLf),
             has("--json"));
    return publish::kFailed;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  for (const int number : {SIGINT, SIGTERM}) {
    // A run in the background ignores them from the start: the terminal's Ctrl+C is not meant for
    // it.
    if (std::signal(number, Stop) == SIG_IGN) static_cast<void>(std::signal(number, SIG_IGN));
  }
  // Taken from the port: it has them in UTF-8 on both systems.
  return Run(tmw::SplitCommandLine(ports::CurrentPorts().processes->OwnArguments()));
}
