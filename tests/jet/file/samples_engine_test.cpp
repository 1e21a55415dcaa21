#include "jet/engine.h"
#include "jet/file/checker.h"
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

bool IsUserTable(const CatalogueObject& object) {
  return jet::file::IsStoredTable(object) && (object.flags & ports::kSystemObject) == 0;
}

// Every table is changed and so goes through the working store, its rows and its definition.
TEST_F(JetSamples, AreRewrittenByTheEngineWithoutALoss) {
  const tests::Sandbox sandbox;
  const auto engine = jet::MakeEngine();
  for (const std::string& name : tests::SampleNames()) {
    SCOPED_TRACE(name);
    jet::file::DatabaseReader before(tests::OpenSample(name), name);
    const std::string path = sandbox.Write(name, tests::SampleBytes(name));
    const auto database = engine->OpenDatabase(path, true, false);
    for (const CatalogueObject& object : before.Objects()) {
      if (!IsUserTable(object)) continue;
      const std::string field = database->Table(object.name).fields.at(0).name;
      database->SetFieldProperty(object.name, field, "Проба", ports::DataType::kLong, 7);
    }
    const auto relations = database->Relations().size();
    database->Close();

    const auto file = std::make_shared<tests::MemoryPageFile>(sandbox.Read(name));
    const auto report = jet::file::CheckDatabase(file, name);
    EXPECT_TRUE(report.IsClean()) << report.findings.Kept().front().Text();
    jet::file::DatabaseReader after(file, name);
    ASSERT_EQ(after.Objects().size(), before.Objects().size());
    EXPECT_EQ(after.Relations(), before.Relations());
    for (const CatalogueObject& object : before.Objects()) {
      if (!IsUserTable(object)) continue;
      const CatalogueObject& other = *after.FindTable(object.name);
      const TableLayout old = before.Definition(object);
      const TableLayout made = after.Definition(other);
      EXPECT_EQ(RowsOfFile(after, made), RowsOfFile(before, old)) << object.name;
      EXPECT_EQ(made.last_autonumber, old.last_autonumber);
      // A relation's index may share a tree with another one.
      EXPECT_EQ(made.logical_indexes.size(), old.logical_indexes.size());
    }
    const auto again = engine->OpenDatabase(path, true, true);
    EXPECT_EQ(again->Relations().size(), relations);
  }
}

}  // namespace
