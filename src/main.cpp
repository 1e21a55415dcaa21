#include "foundation/error_handling.h"
#include "platform/host.h"
#include "startup/main_procedure.h"
#include "startup/services/updater_settings.h"
#include "ui/downloading_form.h"
#include "ui/error_form.h"

int main(int argc, char** argv) {
  if (const auto exit_code = platform::WaitForUpdaterChain()) return *exit_code;
  const auto host = platform::MakeHost(argc, argv);
  platform::CurrentPorts() = host->MakePorts();
  tmw::SetErrorEnvironment({[] { return std::make_unique<tmw::ErrorForm>(); },
                            [] { return tmw::GetUpdaterSettings().NoFinalMessage; }});
  tmw::Main([] { return std::make_unique<tmw::DownloadingForm>(tmw::ExitUpdater); });
  return 0;
}
