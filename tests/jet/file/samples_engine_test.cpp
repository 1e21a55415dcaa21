#include "jet/engine.h"
#include "jet/file/database_reader.h"
#include "ports/database.h"
#include "tests/jet/file/samples.h"
#include "tests/support/sandbox.h"

namespace {

using jet::file::CatalogueObject;
using jet::file::ColumnLayout;
using jet::file::TableLayout;
using tests::JetSamples;

using Rows = std::vector<std::vector<ports::DatabaseValue>>;

Rows RowsOfFile(jet::file::DatabaseReader& reader, const TableLayout& table) {
  Rows rows;
  for (auto source = reader.Rows(table); source.Next();) {
    auto& row = rows.emplace_back();
    for (const std::size_t position : jet::file::FieldOrder(table)) {
      row.push_back(source.Value(table.columns[position]));
    }
  }
  return rows;
}

Rows RowsOfEngine(ports::Database& database, const std::string& table) {
  Rows rows;
  const auto source = database.OpenRecordset(table, ports::RecordsetType::kTable);
  const std::size_t count = source->FieldNames().size();
  for (; !source->AtEnd(); source->MoveNext()) {
    auto& row = rows.emplace_back();
    for (std::size_t i = 0; i < count; ++i)
      row.push_back(source->Value(i));
  }
  return rows;
}

TEST_F(JetSamples, AreReadByTheEngineAsTheyLieInTheFile) {
  const auto engine = jet::MakeEngine();
  for (const std::string& name : tests::SampleNames()) {
    SCOPED_TRACE(name);
    jet::file::DatabaseReader reader(tests::OpenSample(name), name);
    const auto database =
        engine->OpenDatabase(tests::FromPath(tests::SamplesFolder() / name), false, true);
    std::size_t listed = 0;
    for (const CatalogueObject& object : reader.Objects()) {
      if (!jet::file::IsTable(object)) continue;
      ++listed;
      const bool is_system = (object.flags & ports::kSystemObject) != 0;
      if (is_system || !jet::file::IsStoredTable(object)) continue;
      const TableLayout layout = reader.Definition(object);
      EXPECT_EQ(RowsOfEngine(*database, object.name), RowsOfFile(reader, layout)) << object.name;
      const ports::TableDefinition table = database->Table(object.name);
      for (const ports::IndexDefinition& index : table.indexes) {
        const auto rows = database->OpenRecordset(object.name, ports::RecordsetType::kTable);
        rows->SetIndex(index.name);
        EXPECT_EQ(rows->AtEnd(), rows->AtBeginning());
      }
    }
    EXPECT_EQ(database->Tables().size(), listed);
  }
}

}  // namespace
