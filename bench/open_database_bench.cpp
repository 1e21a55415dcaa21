#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "ports/database.h"
#include "ports/host.h"
#include "ports/ports.h"

namespace {

constexpr int kTables = 200;

// A database of that many tables of 13 fields and two indexes.
std::string MakeManyTables() {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "tmw_many_tables.mdb";
  std::filesystem::remove(path);
  const auto db = ports::CurrentPorts().database->CreateDatabase(path.string());
  ports::CurrentPorts().database->BeginTrans();
  for (int i = 0; i < kTables; ++i) {
    ports::TableDefinition table;
    table.name = "Таблица " + std::to_string(i);
    for (int f = 0; f < 13; ++f) {
      ports::FieldDefinition field;
      field.name = "Поле " + std::to_string(f);
      table.fields.push_back(field);
    }
    for (int x = 0; x < 2; ++x) {
      ports::IndexDefinition index;
      index.name = "Индекс " + std::to_string(x);
      index.fields.push_back({"Поле " + std::to_string(x), false});
      table.indexes.push_back(index);
    }
    db->CreateTable(table);
  }
  ports::CurrentPorts().database->CommitTrans();
  db->Close();
  return path.string();
}

// Open, list the tables, read one table's structure, close: what judging a table asks.
void OpenAndLook(benchmark::State& state) {
  const std::string path = MakeManyTables();
  for (auto _ : state) {
    const auto db = ports::CurrentPorts().database->OpenDatabase(path, true, true);
    benchmark::DoNotOptimize(db->Tables());
    benchmark::DoNotOptimize(db->Table("Таблица 150"));
  }
  std::filesystem::remove(path);
}
BENCHMARK(OpenAndLook)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
