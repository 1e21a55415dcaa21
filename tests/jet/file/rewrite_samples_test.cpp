#include <algorithm>
#include <set>

#include "jet/file/catalogue_reader.h"
#include "jet/file/checker.h"
#include "jet/file/database_writer.h"
#include "jet/file/definition_packer.h"
#include "jet/file/definition_parser.h"
#include "jet/file/index_walker.h"
#include "jet/file/property_packer.h"
#include "jet/file/system_rows.h"
#include "tests/jet/file/canonical_rows.h"
#include "tests/jet/file/samples.h"

namespace {

using namespace tests;
using namespace jet::file;

// Bytes that nobody judges: the file's own engine leaves there what was in its memory.
void MaskDefinition(const TableLayout& table, std::string& contents) {
  namespace definition = definition;
  constexpr std::size_t kLeftAsTheyWere = 0x14;
  std::fill_n(contents.begin() + kLeftAsTheyWere, 12, '\0');
  std::size_t at = definition::kFixedLength + table.indexes.size() * definition::statistics::kWidth;
  for (const auto& column : table.columns) {
    const bool has_place = column.IsFixed();
    if (!has_place)
      std::fill_n(contents.begin() +
                      static_cast<std::ptrdiff_t>(at + definition::column::kFixedOffset.offset),
                  2, '\0');
    at += definition::column::kWidth;
  }
  for (std::size_t i = 0; i < table.columns.size(); ++i)
    at += definition::kNameLengthWidth + LoadLittle<std::uint16_t>(contents.data() + at);
  for (const auto& index : table.indexes) {
    namespace real_index = definition::real_index;
    for (std::size_t i = index.columns.size(); i < real_index::kKeyColumnCount; ++i)
      contents[at + real_index::kKeyColumns + i * real_index::kKeyColumnWidth +
               real_index::kKeyDirection.offset] = '\0';
    std::fill_n(contents.begin() + static_cast<std::ptrdiff_t>(at + real_index::kUnjudged.offset),
                4, '\0');
    at += real_index::kWidth;
  }
}

// Where two byte strings first differ, and how; empty when they do not.
std::string Difference(std::string_view a, std::string_view b) {
  const auto [x, y] = std::mismatch(
      a.begin(), a.begin() + static_cast<std::ptrdiff_t>(std::min(a.size(), b.size())), b.begin());
  if (x == a.end() && y == b.end()) return {};
  const auto byte = [](std::string_view bytes, const char* place) {
    return place == bytes.end() ? std::string("end")
                                : std::to_string(static_cast<unsigned char>(*place));
  };
  return "at " + std::to_string(x - a.begin()) + ": " + byte(a, x) + " and " + byte(b, y);
}

template <typename Call>
void ForEachTable(const Call& call) {
  for (const std::string& name : SampleNames()) {
    DatabaseReader reader(OpenSample(name), name);
    for (const CatalogueObject& object : reader.Objects()) {
      if (IsStoredTable(object)) call(reader, object, name + ": " + object.name);
    }
  }
}

std::string Rewritten(DatabaseReader& reader, Copying copying) {
  const auto target = std::make_shared<MemoryPageFile>();
  DatabaseWriter writer({target, "unused"}, reader);
  writer.CopyAll(copying);
  writer.Finish();
  return target->bytes;
}

TEST_F(JetSamples, DefinitionsAreParsedAndPackedToTheSameBytes) {
  std::size_t count = 0;
  ForEachTable([&](DatabaseReader& reader, const CatalogueObject& object, const std::string& name) {
    auto chain = ReadDefinitionChain(reader.Pages(), object.id, 0);
    const TableLayout layout = ParseDefinition(chain);
    MaskDefinition(layout, chain.contents);
    const std::string packed = PackDefinition(layout);
    EXPECT_EQ(Difference(packed, chain.contents), "") << name;
    EXPECT_EQ(DefinitionPageCount(packed.size()), chain.pages.size()) << name;
    ++count;
  });
  EXPECT_GT(count, 140U);
}

// The record with zeroes in the fixed part where no value stands: the bytes of Null and of deleted
// columns are left as they were.
std::string Masked(const TableLayout& layout, const RowView& row) {
  std::string record(row.Record().Bytes());
  const std::size_t fixed = ShapeOf(layout).fixed_length;
  std::string part(fixed, '\0');
  for (const auto& column : layout.columns) {
    const auto value = row.Stored(column);
    if (column.IsFixed() && column.type != ColumnType::kBoolean && value)
      std::copy(value->begin(), value->end(), part.begin() + column.fixed_offset);
  }
  return record.replace(record::kFixedPart, fixed, part);
}

TEST_F(JetSamples, RecordsAreTakenApartAndPackedToTheSameBytes) {
  std::size_t same = 0;
  std::vector<std::string> different;
  ForEachTable([&](DatabaseReader& reader, const CatalogueObject& object, const std::string& name) {
    const TableLayout layout = reader.Definition(object);
    RowPacker packer(layout);
    TableCursor cursor(reader.Pages(), layout);
    std::vector<std::optional<std::string_view>> values(layout.columns.size());
    while (cursor.Next()) {
      const RowView row = cursor.Row();
      for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = row.Stored(layout.columns[i]);
      const std::string difference = Difference(packer.Pack(values), Masked(layout, row));
      if (difference.empty()) {
        ++same;
      } else {
        different.push_back(name + " " + difference);
      }
    }
  });
  // Rows older than their table's last column, with unused bytes before the offsets, or with bytes
  // of Null or of a deleted column in the variable part.
  EXPECT_EQ(different.size(), 10U) << testing::PrintToString(different);
  EXPECT_GT(same, 2700U);
}

TEST_F(JetSamples, IndexEntriesAreMadeAgainOfTheirRows) {
  std::size_t same = 0;
  std::vector<std::string> different;
  ForEachTable([&](DatabaseReader& reader, const CatalogueObject& object, const std::string& name) {
    const TableLayout layout = reader.Definition(object);
    const RowShape shape = ShapeOf(layout);
    std::vector<std::optional<std::string_view>> values(layout.columns.size());
    for (const IndexLayout& index : layout.indexes) {
      const IndexKey key(layout, index);
      IndexWalker walker(reader.Pages(), layout, index);
      while (walker.Next()) {
        const RowPointer pointer = walker.Entry().row;
        const DataPage page(reader.Pages().Read(pointer.page));
        const auto placed = RecordAt(reader.Pages(), layout, page, pointer.row);
        ASSERT_TRUE(placed) << name;
        const RowView row(placed->record, shape);
        for (std::size_t i = 0; i < values.size(); ++i)
          values[i] = row.Stored(layout.columns[i]);
        std::string made;
        if (key.Make(values, made) && made == walker.Entry().key) {
          ++same;
        } else {
          different.push_back(name + " " + Difference(made, walker.Entry().key));
        }
      }
    }
  });
  // Texts with characters that the table of weights does not know.
  EXPECT_EQ(different.size(), 2U) << testing::PrintToString(different);
  for (const std::string& name : different)
    EXPECT_TRUE(name.starts_with("unicodecompv2003.mdb: Table ")) << name;
  EXPECT_GT(same, 3000U);
}

TEST_F(JetSamples, PropertiesSurviveBeingPacked) {
  std::size_t same_bytes = 0;
  for (const std::string& name : SampleNames()) {
    DatabaseReader reader(OpenSample(name), name);
    for (const CatalogueObject& object : reader.Objects()) {
      const auto& stored = object.stored[objects_column::kLvProp];
      if (!stored) continue;
      auto sets = reader.Properties(object);
      std::erase_if(sets, [](const auto& set) { return set.properties.empty(); });
      const std::string packed = PackProperties(sets);
      EXPECT_EQ(ParseProperties({0, packed}), sets) << name << ": " << object.name;
      // Others list names that no property has any more.
      if (packed == ReadLongValue(reader.Pages(), {object.place.page, *stored})) ++same_bytes;
    }
  }
  EXPECT_GT(same_bytes, 50U);
}

TEST_F(JetSamples, AnEmptyDatabaseIsThatOfTheFormatsOwnEnginePageForPage) {
  std::string expected = SampleBytes("adox_jet4.mdb");
  DatabaseReader reader(OpenSample("adox_jet4.mdb"), "adox_jet4.mdb");
  const auto& created = reader.Objects().front().stored[objects_column::kDateCreate];
  const auto target = std::make_shared<MemoryPageFile>();
  DatabaseWriter writer({target, "unused"}, reader.FileHeader(),
                        LoadLittle<double>(created->data()));
  writer.Finish();
  for (const CatalogueObject& object : reader.Objects()) {
    if (!IsStoredTable(object)) continue;
    auto chain = ReadDefinitionChain(reader.Pages(), object.id, 0);
    MaskDefinition(ParseDefinition(chain), chain.contents);
    std::copy(
        chain.contents.begin(), chain.contents.end(),
        expected.begin() + static_cast<std::ptrdiff_t>(object.id * kPageSize + definition::kHead));
  }
  ASSERT_EQ(target->bytes.size(), expected.size());
  for (std::size_t page = 0; page * kPageSize < expected.size(); ++page) {
    const auto bytes = [page](const std::string& file) {
      return file.substr(page * kPageSize, kPageSize);
    };
    EXPECT_EQ(Difference(bytes(target->bytes), bytes(expected)), "") << "page " << page;
  }
}

// Everything that a reader can tell of a file, but for pages.
std::vector<std::string> Contents(const std::string& bytes) {
  std::vector<std::string> lines;
  DatabaseReader reader(std::make_shared<MemoryPageFile>(bytes), "copy");
  for (const CatalogueObject& object : reader.Objects()) {
    std::string line = object.name + " " + std::to_string(object.type) + " " +
                       std::to_string(object.flags) + " " + std::to_string(object.parent);
    for (const auto& set : reader.Properties(object)) {
      line += " " + set.owner;
      for (const auto& property : set.properties)
        line += " " + property.name + "=" + property.value;
    }
    lines.push_back(std::move(line));
    if (!IsStoredTable(object)) continue;
    const TableLayout layout = reader.Definition(object);
    std::size_t rows = 0;
    for (TableRows each = reader.Rows(layout); each.Next();)
      ++rows;
    lines.push_back(std::to_string(rows) + " rows");
    for (const auto& index : layout.logical_indexes)
      lines.push_back(index.name + " " + std::to_string(index.kind));
    // The catalogue's rows hold page numbers.
    if (object.flags == 0) {
      for (std::string& row : CanonicalRows(reader, layout))
        lines.push_back(std::move(row));
    }
  }
  for (const auto& relation : reader.Relations())
    lines.push_back(relation.name + " " + relation.table + " " + relation.referenced_table);
  return lines;
}

TEST_F(JetSamples, ARewrittenFileIsCleanAndHoldsTheSame) {
  for (const std::string& name : SampleNames()) {
    SCOPED_TRACE(name);
    for (const auto copying : {Copying::kAsItStands, Copying::kCompacted}) {
      DatabaseReader reader(OpenSample(name), name);
      const std::string copy = Rewritten(reader, copying);
      EXPECT_TRUE(Contents(copy) == Contents(SampleBytes(name)));
      const auto report = CheckDatabase(std::make_shared<MemoryPageFile>(copy), "copy");
      for (const auto& finding : report.findings.Kept())
        EXPECT_EQ(finding.severity, Severity::kNote) << finding.Text();
      EXPECT_TRUE(report.IsClean());
      DatabaseReader again(std::make_shared<MemoryPageFile>(copy), "copy");
      EXPECT_EQ(Difference(Rewritten(again, copying), copy), "");
    }
  }
}

}  // namespace
