#include "foundation/error_environment.h"
#include "ports/host.h"
#include "services/run_log.h"
#include "services/run_outcome.h"
#include "services/updater_settings.h"
#include "startup/main_procedure.h"
#include "ui/downloading_form.h"
#include "ui/error_form.h"

int main(int argc, char** argv) {
  if (const auto exit_code = ports::PrepareUpdater(argc, argv)) return *exit_code;
  if (const auto exit_code = ports::WaitForUpdaterChain()) return *exit_code;
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  tmw::SetErrorEnvironment({[] { return std::make_unique<tmw::ErrorForm>(); },
                            [] { return tmw::GetUpdaterSettings().NoFinalMessage; }});
  tmw::Main([] { return std::make_unique<tmw::DownloadingForm>(tmw::ExitUpdater); });
  const int exit_code = static_cast<int>(tmw::GetRunOutcome());
  tmw::LogEvent("end", {{"exit_code", exit_code}});
  return exit_code;
}
