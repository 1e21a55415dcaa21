#include "platform/host.h"
#include "startup/main_procedure.h"

int main(int argc, char** argv) {
  if (const auto exit_code = platform::WaitForUpdaterChain()) return *exit_code;
  const auto host = platform::MakeHost(argc, argv);
  platform::CurrentPorts() = host->MakePorts();
  tmw::Main({});
  return 0;
}
