#include <sys/resource.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

#include "jet/file/database_reader.h"
#include "ports/database.h"
#include "ports/host.h"
#include "ports/page_file.h"
#include "ports/ports.h"

// Times one piece of work on a database file: every value of every table, a list of its tables, or
// a compacted copy. Prints seconds and the peak of memory in MiB.
//   jet_file read|list FILE
//   jet_file compact FILE NEWFILE
namespace {

std::uint64_t ReadAll(const std::string& path) {
  auto opened = ports::CurrentPorts().page_files->Open(path, ports::PageFileMode::kRead);
  if (!opened) return 0;
  jet::file::DatabaseReader reader(std::move(opened.value), path);
  std::uint64_t values = 0;
  for (const auto& object : reader.Objects()) {
    if (!jet::file::IsStoredTable(object)) continue;
    const auto table = reader.Definition(object);
    auto rows = reader.Rows(table);
    while (rows.Next()) {
      for (const auto& column : table.columns)
        values += rows.Value(column).index() != 0 ? 1 : 0;
    }
  }
  return values;
}

}  // namespace

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  const std::string work = argc > 2 ? argv[1] : "";
  auto& engine = *ports::CurrentPorts().database;
  const auto start = std::chrono::steady_clock::now();
  std::uint64_t count = 0;
  if (work == "read") {
    count = ReadAll(argv[2]);
  } else if (work == "list") {
    count = engine.OpenDatabase(argv[2], false, true)->Tables().size();
  } else if (work == "compact" && argc > 3) {
    engine.CompactDatabase(argv[2], argv[3]);
    count = 1;
  }
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("%.4f %ld\n", passed.count(), usage.ru_maxrss / 1024);
  return count == 0 ? 1 : 0;
}
