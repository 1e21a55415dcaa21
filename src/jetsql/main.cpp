#include "jetsql/commands.h"
#include "ports/host.h"
#include "ports/ports.h"

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  ports::CurrentPorts().log_files = nullptr;  // the log is the updater's
  return tools::RunProgram(jetsql::MakeProgram());
}
