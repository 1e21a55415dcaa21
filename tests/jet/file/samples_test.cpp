#include "tests/jet/file/samples.h"

#include <map>
#include <nlohmann/json.hpp>

#include "jet/errors.h"
#include "jet/file/account_ids.h"
#include "jet/file/checker.h"
#include "jet/file/database_reader.h"
#include "jet/file/system_tables.h"
#include "tests/jet/file/canonical_rows.h"

namespace {

using jet::file::CatalogueObject;
using jet::file::ColumnLayout;
using jet::file::ColumnType;
using jet::file::DatabaseReader;
using jet::file::TableLayout;
using nlohmann::json;
using tests::JetSamples;

json ExpectedContents() {
  std::ifstream file(tests::SamplesFolder() / "expected.json");
  return json::parse(file);
}

const char* TypeName(ColumnType type) {
  static const std::map<ColumnType, const char*> names = {
      {ColumnType::kBoolean, "boolean"},   {ColumnType::kByte, "byte"},
      {ColumnType::kInteger, "integer"},   {ColumnType::kLong, "long"},
      {ColumnType::kCurrency, "currency"}, {ColumnType::kSingle, "float"},
      {ColumnType::kDouble, "double"},     {ColumnType::kDate, "datetime"},
      {ColumnType::kBinary, "binary"},     {ColumnType::kText, "text"},
      {ColumnType::kOle, "ole"},           {ColumnType::kMemo, "memo"},
      {ColumnType::kGuid, "repid"},        {ColumnType::kNumeric, "numeric"},
  };
  const auto found = names.find(type);
  return found == names.end() ? "?" : found->second;
}

json Columns(const TableLayout& table) {
  json columns = json::array();
  for (const std::size_t position : jet::file::FieldOrder(table)) {
    const ColumnLayout& column = table.columns[position];
    const int size = column.type == ColumnType::kBoolean ? 0 : column.size;
    columns.push_back({{"name", column.name}, {"type", TypeName(column.type)}, {"size", size}});
  }
  return columns;
}

// Long rows are given by their beginnings only.
std::string Beginning(const std::string& row) {
  constexpr std::size_t kShown = 300;
  return row.size() > kShown ? row.substr(0, kShown) + "…" : row;
}

bool IsUserTable(const CatalogueObject& object) {
  return jet::file::IsStoredTable(object) && (object.flags & ports::kSystemObject) == 0;
}

TEST_F(JetSamples, GiveWhatAnIndependentReaderFoundInThem) {
  const json expected = ExpectedContents();
  ASSERT_EQ(tests::SampleNames().size(), expected.size());
  for (const auto& [name, contents] : expected.items()) {
    SCOPED_TRACE(name);
    DatabaseReader reader(tests::OpenSample(name), name);
    json tables = json::object();
    for (const CatalogueObject& object : reader.Objects()) {
      if (!IsUserTable(object)) continue;
      const TableLayout table = reader.Definition(object);
      const auto rows = tests::CanonicalRows(reader, table);
      json& facts = tables[object.name];
      facts = {
          {"columns", Columns(table)}, {"rows", rows.size()}, {"sha256", tests::DigestOf(rows)}};
      facts["first"] = json::array();
      for (std::size_t i = 0; i < rows.size() && i < 2; ++i)
        facts["first"].push_back(Beginning(rows[i]));
      EXPECT_EQ(rows.size(), table.row_count) << object.name;
    }
    EXPECT_EQ(tables.size(), contents["tables"].size());
    for (const auto& [table, facts] : contents["tables"].items())
      EXPECT_EQ(tables[table], facts) << table;
  }
}

std::string Words(const jet::file::CheckReport& report) {
  std::string words;
  for (const jet::file::Finding& finding : report.findings.Kept())
    words +=
        (finding.severity == jet::file::Severity::kFault ? "! " : "  ") + finding.Text() + "\n";
  return words;
}

TEST_F(JetSamples, PassTheCheck) {
  // Files of the engine are clean, and so are these but for two harmless things.
  const std::map<std::string, std::string> notes = {
      {"querytestv2000.mdb",
       "  таблица \"MSysQueries\": число записей не совпадает с указанным в определении "
       "(страница 4): 90, указано 82\n"},
      {"unicodecompv2003.mdb",
       "  индекс \"Unicode\" таблицы \"Table\": в индексе есть ключи длиннее 510 байт "
       "(страница 57): 1\n"},
  };
  for (const std::string& name : tests::SampleNames()) {
    const auto report = jet::file::CheckDatabase(tests::OpenSample(name), name);
    const auto note = notes.find(name);
    EXPECT_EQ(Words(report), note == notes.end() ? "" : note->second) << name;
  }
}

}  // namespace
