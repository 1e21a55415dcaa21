// What the run's log costs: events a second, in both files, rotation included. A run writes about
// eight events a component; what a component costs without them is measured by the other benches.
//   run_log_bench [EVENTS]      the log is written below $XDG_STATE_HOME or %LOCALAPPDATA%
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "ports/host.h"
#include "ports/ports.h"
#include "services/run_log.h"

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(1, argv);
  ports::CurrentPorts() = host->MakePorts();
  const int events = argc > 1 ? std::atoi(argv[1]) : 20000;
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < events; ++i) {
    tmw::LogEvent("loaded", {{"address", "https://update.example/TMW_5.12.340/Module.dll.tmz"},
                             {"bytes", i},
                             {"file", "C:\\Program Files\\Kestrel Soft\\TMW\\tm\\Module.dll"}});
  }
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
  std::printf("%d events in %.3f s: %.1f us each\n", events, taken.count(),
              taken.count() * 1e6 / events);
  return tmw::RunLogPath().empty() ? 1 : 0;
}
