#include <exception>
#include <iostream>

#include "foundation/command_line.h"
#include "foundation/error_handling.h"
#include "foundation/version.h"
#include "platform/host.h"
#include "platform/ports.h"
#include "platform/processes.h"
#include "publish/commands.h"

namespace {

constexpr const char* kHelp = R"(tmpublish - makes releases for the update server and checks them

  tmpublish publish DESCRIPTION         make a release and announce it
      --product FOLDER                  the product's files
      --database FILE                   the reference database
      --scripts FOLDER                  the update scripts (*.xml)
      --output FOLDER                   what the web server offers; older releases stay
      --replace                         ... even over a release of the same version
  tmpublish check FOLDER|URL            read the announced release as the updater will and report
                                        every fault
      --from VERSION                    ... with scripts for databases of this version (3.5.0) on
  tmpublish diff OLD NEW                what a user of the release OLD downloads to get NEW; each is
                                        the folder of a release (TMW_3.6.0.2)
  tmpublish --help | --version

      --json                            with any command: one JSON object on standard output
Exit codes: 0 done, 1 faults found (they are listed; nothing is published), 2 wrong usage,
3 failed (the reason is on standard error). docs/publishing.md describes DESCRIPTION.
)";

int Run(const std::vector<std::string>& arguments) {
  if (!arguments.empty() && (arguments[0] == "--help" || arguments[0] == "-h")) {
    std::cout << kHelp;
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
    std::cerr << "tmpublish: " << error.what() << "; see tmpublish --help\n";
    return publish::kWrongUsage;
  } catch (...) {
    const tmw::ProgramError error = tmw::CurrentError();
    std::cerr << "tmpublish: error " << error.Number << ": " << error.Description << '\n';
    return publish::kFailed;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto host = platform::MakeHost(argc, argv);
  platform::CurrentPorts() = host->MakePorts();
  // Taken from the port: it has them in UTF-8 on both systems.
  return Run(tmw::SplitCommandLine(platform::CurrentPorts().processes->OwnArguments()));
}
