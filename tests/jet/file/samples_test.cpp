#include <map>
#include <nlohmann/json.hpp>

#include "jet/errors.h"
#include "jet/file/account_ids.h"
#include "jet/file/checker.h"
#include "jet/file/database_reader.h"
#include "jet/file/system_tables.h"
#include "tests/jet/file/canonical_rows.h"
#include "tests/jet/file/patient.h"

namespace {

using namespace tests;
using namespace jet::file;
using nlohmann::json;

json ExpectedContents() {
  std::ifstream file(SamplesFolder() / "expected.json");
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
  for (const std::size_t position : FieldOrder(table)) {
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
  return IsStoredTable(object) && (object.flags & ports::kSystemObject) == 0;
}

TEST_F(JetSamples, GiveWhatAnIndependentReaderFoundInThem) {
  const json expected = ExpectedContents();
  ASSERT_EQ(SampleNames().size(), expected.size());
  for (const auto& [name, contents] : expected.items()) {
    SCOPED_TRACE(name);
    DatabaseReader reader(OpenSample(name), name);
    json tables = json::object();
    for (const CatalogueObject& object : reader.Objects()) {
      if (!IsUserTable(object)) continue;
      const TableLayout table = reader.Definition(object);
      const auto rows = CanonicalRows(reader, table);
      json& facts = tables[object.name];
      facts = {{"columns", Columns(table)}, {"rows", rows.size()}, {"sha256", DigestOf(rows)}};
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

std::string Words(const CheckReport& report) {
  std::string words;
  for (const Finding& finding : report.findings.Kept())
    words += (finding.severity == Severity::kFault ? "! " : "  ") + finding.Text() + "\n";
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
  for (const std::string& name : SampleNames()) {
    const auto report = CheckDatabase(OpenSample(name), name);
    const auto note = notes.find(name);
    EXPECT_EQ(Words(report), note == notes.end() ? "" : note->second) << name;
  }
}

TEST_F(JetSamples, AreRefusedWithTheirReasonWhenTheyAreOfAnotherFormat) {
  const std::map<std::string, std::string> cases = {
      {"refuse_jet3_common.mdb", "формат слишком старый (Jet 3), поддерживается только Jet 4"},
      {"refuse_newer.accdb", "формат более новый, поддерживается только Jet 4"},
  };
  for (const auto& [name, reason] : cases) {
    try {
      const DatabaseReader reader(OpenSample(name), name);
      ADD_FAILURE() << name;
    } catch (const ports::DatabaseError& error) {
      EXPECT_EQ(error.Number, jet::kUnknownFormat);
      EXPECT_EQ(error.Description,
                "Неизвестный формат базы данных \"" + name + "\": " + reason + ".");
    }
  }
}

TEST_F(JetSamples, NameTheObjectsThatARewrittenFileWouldLose) {
  for (const std::string& name : SampleNames())
    EXPECT_TRUE(DatabaseReader(OpenSample(name), name).ForeignObjects().empty()) << name;
  // A container that becomes a form, the other kinds likewise.
  const std::map<int, std::string> kinds = {{0x8000, "форма"},
                                            {0x8002, "макрос"},
                                            {0x8004, "отчёт"},
                                            {0x8007, "модуль"},
                                            {0x800C, "страница доступа"}};
  for (const auto& [type, words] : kinds) {
    Patient patient("adox_jet4.mdb");
    const auto row = patient.Row("MSysObjects");
    patient.Set(row.page, Field<std::uint16_t>{patient.ValueOffset("MSysObjects", row, "Type")},
                static_cast<std::uint16_t>(type));
    const auto objects = patient.Reader().ForeignObjects();
    ASSERT_EQ(objects.size(), 1U) << type;
    EXPECT_EQ(objects[0].kind, words);
    EXPECT_EQ(objects[0].name, "Tables");
  }
}

}  // namespace
