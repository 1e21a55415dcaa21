#include "ports/host.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "rollback/program.h"

int main(int argc, char** argv) {
  if (const auto exit_code = ports::WaitForUpdaterChain()) return *exit_code;
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  return rollback::Run(ports::CurrentPorts().processes->OwnArgumentList());
}
