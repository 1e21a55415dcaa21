// Builds both databases of an update, as the run does but without its ordered waits, and prints the
// wall milliseconds and the peak of memory in KiB. The database folder is the one of the settings.
//   database_build RELEASE-FOLDER     holds Loaded, DBUpdates and DBStruct; of the two tables
//                                     "Документы" is the user's own, "Справочник" is delivered
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "database/etalon_db.h"
#include "database/working_db.h"
#include "foundation/error_handling.h"
#include "ports/clock.h"
#include "ports/host.h"
#include "ports/ports.h"
#include "services/updater_events.h"

namespace {

class NoWaits final : public ports::Clock {
 public:
  void Sleep(std::int32_t /*milliseconds*/) override {}
  std::int64_t TickCount() override { return 0; }
  std::int64_t UtcSeconds() override { return 0; }
};

bool Build(const std::string& folder) {
  std::vector<tmw::WuTableNode> tables(2);
  tables[0].TableName = "Справочник";
  tables[0].NeedUpdate = true;
  tables[1].TableName = "Документы";
  tables[1].IsUser = true;
  tmw::DatabaseBuild build;
  build.ProductCode = "TMW";
  build.TargetVersion = {1, 0, 1};
  build.LoadedFolder = folder + "/Loaded";
  build.ScriptsFolder = folder + "/DBUpdates";
  build.StructuresFolder = folder + "/DBStruct";
  build.Tables = &tables;
  tmw::SilentEvents events;
  return tmw::BuildEtalonDB(build, events) && tmw::BuildWorkingDB(build, events);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) return 2;
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  NoWaits clock;
  ports::CurrentPorts().clock = &clock;
  const auto start = std::chrono::steady_clock::now();
  if (!Build(argv[1])) return 1;
  const auto took = std::chrono::steady_clock::now() - start;
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf(
      "%lld %ld\n",
      static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(took).count()),
      usage.ru_maxrss);
  return 0;
} catch (...) {
  std::fprintf(stderr, "%s\n", tmw::CurrentError().Description.c_str());
  return 1;
}
