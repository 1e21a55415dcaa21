#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "platform/database.h"
#include "platform/host.h"
#include "platform/ports.h"

namespace {

constexpr int kTables = 200;

// A database of that many tables of 13 fields and two indexes.
std::string MakeManyTables() {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "tmw_many_tables.mdb";
  std::filesystem::remove(path);
  const auto db = platform::CurrentPorts().database->CreateDatabase(path.string());
  platform::CurrentPorts().database->BeginTrans();
  for (int i = 0; i < kTables; ++i) {
    platform::TableDefinition table;
    table.name = "Таблица " + std::to_string(i);
    for (int f = 0; f < 13; ++f) {
      platform::FieldDefinition field;
      field.name = "Поле " + std::to_string(f);
      table.fields.push_back(field);
    }
    for (int x = 0; x < 2; ++x) {
      platform::IndexDefinition index;
      index.name = "Индекс " + std::to_string(x);
      index.fields.push_back({"Поле " + std::to_string(x), false});
      table.indexes.push_back(index);
    }
    db->CreateTable(table);
  }
  platform::CurrentPorts().database->CommitTrans();
  return path.string();
}

// Open, list the tables, read one table's structure, close: what judging a table asks.
void OpenAndLook(benchmark::State& state) {
  const std::string path = MakeManyTables();
  for (auto _ : state) {
    const auto db = platform::CurrentPorts().database->OpenDatabase(path, true, true);
    benchmark::DoNotOptimize(db->Tables());
    benchmark::DoNotOptimize(db->Table("Таблица 150"));
  }
  std::filesystem::remove(path);
}
BENCHMARK(OpenAndLook)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  const auto host = platform::MakeHost(argc, argv);
  platform::CurrentPorts() = host->MakePorts();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
