#include "ports/host.h"
#include "ports/ports.h"
#include "publish/commands.h"
#include "tools/stop.h"

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv, true);
  ports::CurrentPorts() = host->MakePorts();
  ports::CurrentPorts().log_files = nullptr;  // the log is the updater's
  tools::ListenForStop();
  return tools::RunProgram(publish::MakeProgram());
}
