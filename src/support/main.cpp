#include "ports/host.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "support/program.h"

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  return support::Run(ports::CurrentPorts().processes->OwnArgumentList());
}
